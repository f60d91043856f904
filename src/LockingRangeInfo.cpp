#include "LockingRangeInfo.h"

LockingRangeInfo::LockingRangeInfo(uint32_t index, uint64_t startLocation, uint64_t length,
                                   bool RLKEnable, bool RLocked, bool WLKEnable, bool WLocked)
    : m_Index(index),
      m_StartLocation(startLocation),
      m_Length(length),
      m_RLKEnable(RLKEnable),
      m_RLocked(RLocked),
      m_WLKEnable(WLKEnable),
      m_WLocked(WLocked) {}
