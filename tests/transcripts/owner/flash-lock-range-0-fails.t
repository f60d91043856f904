# A flash lock whose locking of the global range fails says so and still
# loads the image, sets MBR done and ends.
--- use factory
--- use query-enabled
--- tool sudo dmidecode
	UUID: 0000-11
--- tool sedutil-cli -n --initialSetup 000011 /dev/sda
takeOwnership complete
--- tool Lantivo --enableLockingRange *
LockingRange0 success
--- tool Lantivo --setLockingRange *
NOT_AUTHORIZED
--- input
3
Y
--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 2 3]
Are you sure to flash lock(Y/N)?
Enable OPAL OK
SetLockingRange Error
Please wait...   

Please poweroff 
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
sudo dmidecode
sedutil-cli -n --initialSetup 000011 /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges 000011 /dev/sda
Lantivo --enableLockingRange 0 000011 RW /dev/sda
Lantivo --setLockingRange 0 Y Y 000011 /dev/sda
sedutil-cli -n --setMBRDone OFF 000011 /dev/sda
sedutil-cli -n --loadPBAimage 000011 PBA_flash.img /dev/sda
sedutil-cli -n --setMBRDone ON 000011 /dev/sda
--- status 0
