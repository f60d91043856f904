# A drive not yet enabled: the whole screen, offering 0 to 3; 0 exits.
--- use factory
--- input
0
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
 OPAL Enable:     Disable
 OPAL Locked:     No

 Action:
   0.  Exit
   1.  Select Disk
   2.  Initial this OPAL Device and Set Admin Password (Enable OPAL)
   3.  Flash Lock
-------------------------------------------------
Enter action number: 
\ no final newline
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
--- status 0
