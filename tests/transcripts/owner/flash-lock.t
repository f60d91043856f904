# The flash lock takes ownership with the machine's UUID (hyphens removed,
# letter case kept), locks the global range, turns MBR done off, loads
# PBA_flash.img, turns MBR done on, asks for power-off and ends.
--- use factory
--- use query-enabled
--- tool sudo dmidecode
# dmidecode 3.4
System Information
	Manufacturer: Maker
	UUID: 4C4C4544-0042-3510-8052-B4c04f384d32
	SKU Number: 0
--- tool sedutil-cli -n --initialSetup 4C4C4544004235108052B4c04f384d32 /dev/sda
takeOwnership complete
Locking SP Activate Complete
LockingRange0 disabled 
Initial setup of TPer complete on /dev/sda
--- tool sedutil-cli -n --setMBRDone OFF 4C4C4544004235108052B4c04f384d32 /dev/sda
MBRDone set off 
--- tool sedutil-cli -n --loadPBAimage *
Writing PBA to /dev/sda
PBA image  PBA_flash.img written
--- tool sedutil-cli -n --setMBRDone ON *
MBRDone set on 
--- tool Lantivo *
LockingRange0 success
--- input
3
y

--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 2 3]
Are you sure to flash lock(Y/N)?
Enable OPAL OK
MBRDone set off 
Please wait...   
Writing PBA to /dev/sda
PBA image  PBA_flash.img written
MBRDone set on 

Please poweroff 
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
sudo dmidecode
sedutil-cli -n --initialSetup 4C4C4544004235108052B4c04f384d32 /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges 4C4C4544004235108052B4c04f384d32 /dev/sda
Lantivo --enableLockingRange 0 4C4C4544004235108052B4c04f384d32 RW /dev/sda
Lantivo --setLockingRange 0 Y Y 4C4C4544004235108052B4c04f384d32 /dev/sda
sedutil-cli -n --setMBRDone OFF 4C4C4544004235108052B4c04f384d32 /dev/sda
sedutil-cli -n --loadPBAimage 4C4C4544004235108052B4c04f384d32 PBA_flash.img /dev/sda
sedutil-cli -n --setMBRDone ON 4C4C4544004235108052B4c04f384d32 /dev/sda
--- status 0
