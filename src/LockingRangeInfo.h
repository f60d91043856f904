// One locking range of a drive, as the range listing last reported it.
#pragma once

#include <cstdint>
#include <string>

class LockingRangeInfo {
 public:
  LockingRangeInfo() = default;
  LockingRangeInfo(uint32_t index, uint64_t startLocation, uint64_t length, bool RLKEnable,
                   bool RLocked, bool WLKEnable, bool WLocked);

  uint32_t GetIndex() const { return m_Index; }
  uint64_t GetStartLocation() const { return m_StartLocation; }
  uint64_t GetLength() const { return m_Length; }
  bool GetRLKEnable() const { return m_RLKEnable; }
  bool GetRLocked() const { return m_RLocked; }
  bool GetWLKEnable() const { return m_WLKEnable; }
  bool GetWLocked() const { return m_WLocked; }

  // A display name: the partition device name in partition mode, else empty.
  void SetAlias(std::string nick) { alias = std::move(nick); }
  std::string GetAlias() const { return alias; }

 private:
  uint32_t m_Index = 0;  // 0 is the global range
  uint64_t m_StartLocation = 0;
  uint64_t m_Length = 0;
  bool m_RLKEnable = false;
  bool m_RLocked = false;
  bool m_WLKEnable = false;
  bool m_WLocked = false;
  std::string alias;
};
