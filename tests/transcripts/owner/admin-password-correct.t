# Action 11 with the right password: the range listing under it succeeds,
# and the next menu is the whole menu of an owned drive.
--- use owned
--- input
11
pw
y

--- full-screen
/dev/sda	KVX 480GB	SBFK71F3		2
[clear]
=================================================
|                  Veltrak v1.1.20051           |
=================================================
 File Descriptor: /dev/sda
 Model Name:      KVX 480GB
 Firmware Version:     SBFK71F3
 OPAL Version:    2
 OPAL Support:    Support
 OPAL Enable:     Enable
 OPAL Locked:     No

 Action:
   0.  Exit
   1.  Select Disk
   11. Set Admin1 / SID Password
   17. Erase All Data

-------------------------------------------------
Enter action number: Please enter your admin password (w/o space): Your password is: pw
Are you sure this is your admin password? (Y/N): Password correct

Enter any key to continue...[clear]
=================================================
|                  Veltrak v1.1.20051           |
=================================================
 File Descriptor: /dev/sda
 Model Name:      KVX 480GB
 Firmware Version:     SBFK71F3
 OPAL Version:    2
 OPAL Support:    Support
 OPAL Enable:     Enable
 OPAL Locked:     No

 Action:
   0.  Exit
   1.  Select Disk

   3.  Look up Locking Range
   4.  Set State of Locking Range
   5.  Set Address of Locking Range

   6.  Set User's Password

   7.  Check Access Right of Locking Range
   8.  Set Previleges to Locking Range
   9.  Remove All Users from Locking Range

   13. Set MBR Enable or not
   14. Set/Unset MBR
   15. Load Pre-Boot Authorization Image

   16. Disable OPAL (revert)
   17. Erase All Data

-------------------------------------------------
Enter action number: 
\ no final newline
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
sedutil-cli -n --query /dev/sda
--- status 0
