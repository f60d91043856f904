// Console front end: the drive list, the menu loop, disk selection and the
// screen behind every action number.
#pragma once

#include <string>
#include <vector>

#include "DiskInfo.h"

// The drives accepted by the last scan, in scan order; the number of them;
// and the one every menu action works on.
extern std::vector<DiskInfo> DiskList;
extern int DiskCount;
extern DiskInfo* SelectedDisk;

// Rebuilds the drive list from the sedutil scan, keeping only drives whose
// model begins with an accepted maker prefix, and selects the first one.
void ScanDisks();

// Clears the screen and draws the banner, the selected drive's summary and
// the actions its state allows; choiceList receives the numbers offered.
void ShowMenu(std::vector<int>& choiceList);

// Lists the drives and selects the one whose number is typed; any number
// that names no drive keeps the selection.
void SelectDisk();

// The range table: "Now status", the rules and one row per range, each
// column right-aligned in its fixed width.
void ShowLRs(std::vector<LockingRangeInfo> ranges);
// The table of a partitioned drive: only ranges named after a partition,
// numbered from 1, under the selected drive's partition prefix.
void ShowSpecLRs(std::vector<LockingRangeInfo> ranges);

// The screens that speak of areas on a partitioned drive (action numbers in
// brackets). Each works on SelectedDisk and ends with the pause.
void LockingRanges();         // (3) refresh and show the ranges
void SetStateofLR();          // (4) set a range's or area's protection mode
void SetAddressofLR();        // (5) give a range a start and a length
void SpecialActionLR0();      // (12) set the global range's protection mode
void SetAccessSetting_TCG();  // (8) grant users the lock privilege on a range
void RemoveUsers();           // (9) remove all users from ranges, one by one

// Prints a newline and who may access each range (action 7 and the
// privilege screens).
void GetAccessSetting();

// (2) Takes a drive not yet enabled into ownership with a typed password;
// refuses a drive without Opal or one already enabled.
void EnableOPAL();

// (3 on a drive not yet enabled) Binds the drive to this machine: owner
// password from the machine UUID, global range locked, flash pre-boot image
// installed. -1 when declined; else 0, whatever the steps reported.
int FlashLock();

// The whole program: scan, then the menu loop until an exit. Returns the
// process exit status: 0, or -1 when no drive was accepted.
int VeltrakMain();
