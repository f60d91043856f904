# A drive without Opal is never queried and is offered only 0 and 1; the
# unoffered 2 ends the program.
--- tool sedutil-cli -n --scan
Scanning for Opal compliant disks
/dev/sda   No  KVX HDD                                  CC45    
No more disks present ending scan
--- input
2
--- full-screen
/dev/sda	KVX HDD	CC45		 No
[clear]
=================================================
|                  Veltrak v1.1.20051           |
=================================================
 File Descriptor: /dev/sda
 Model Name:      KVX HDD
 Firmware Version:     CC45
 OPAL Version:    0
 OPAL Support:    Not Support
 OPAL Enable:     Disable
 OPAL Locked:     No

 Action:
   0.  Exit
   1.  Select Disk
-------------------------------------------------
Enter action number: Unsupported action
--- calls
sedutil-cli -n --scan
--- status 0
