# An enabled drive without a password offers 11 and 17 only: "Enter" the
# password while it is locked, "Set" it once unlocked. 5 is not offered.
--- use kvx-scan
--- use query-locked
--- use query-enabled
--- input
11
pw
n

5
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
 OPAL Locked:     Yes

 Action:
   0.  Exit
   1.  Select Disk
   11. Enter Admin1 / SID Password
   17. Erase All Data

-------------------------------------------------
Enter action number: Please enter your admin password (w/o space): Your password is: pw
Are you sure this is your admin password? (Y/N): 
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
   11. Set Admin1 / SID Password
   17. Erase All Data

-------------------------------------------------
Enter action number: Unsupported action
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
sedutil-cli -n --query /dev/sda
--- status 0
