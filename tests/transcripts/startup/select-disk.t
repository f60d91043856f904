# Action 1 lists the drives and switches to the one chosen; 2 (the drive
# count), -1 and a number beyond int keep the current drive, and the failed
# read of the last one ends the program at the next action prompt.
--- tool sedutil-cli -n --scan
Scanning for Opal compliant disks
/dev/sda    2  KVX 480GB                                SBFK71F3
/dev/nvme0  2  ZEP NV2000 1TB                           2B2QEXM7
No more disks present ending scan
--- use query-disabled
--- tool sedutil-cli -n --query /dev/nvme0
Locking function (0x0002)
    Locked = N, LockingEnabled = Y, LockingSupported = Y, MBRDone = N, MBREnabled = N, MediaEncrypt = Y
--- input
1
1
1
2
1
-1
1
99999999999
--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
/dev/nvme0	ZEP NV2000 1TB	 2B2QEXM7		2
[menu /dev/sda: 0 1 2 3]
 * Disk list:
    0. /dev/sda, KVX 480GB
    1. /dev/nvme0, ZEP NV2000 1TB
Select a disk by number: [menu /dev/nvme0: 0 1 11 17]
 * Disk list:
    0. /dev/sda, KVX 480GB
    1. /dev/nvme0, ZEP NV2000 1TB
Select a disk by number: [menu /dev/nvme0: 0 1 11 17]
 * Disk list:
    0. /dev/sda, KVX 480GB
    1. /dev/nvme0, ZEP NV2000 1TB
Select a disk by number: [menu /dev/nvme0: 0 1 11 17]
 * Disk list:
    0. /dev/sda, KVX 480GB
    1. /dev/nvme0, ZEP NV2000 1TB
Select a disk by number: [menu /dev/nvme0: 0 1 11 17]
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
sedutil-cli -n --query /dev/nvme0
sedutil-cli -n --query /dev/nvme0
sedutil-cli -n --query /dev/nvme0
sedutil-cli -n --query /dev/nvme0
--- status 0
