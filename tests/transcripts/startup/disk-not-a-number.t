# A word that is not a number at the disk prompt selects the first drive,
# and the failed input ends the program at the next action prompt.
--- tool sedutil-cli -n --scan
Scanning for Opal compliant disks
/dev/sda    2  KVX 480GB                                SBFK71F3
/dev/nvme0  2  ZEP NV2000 1TB                           2B2QEXM7
No more disks present ending scan
--- input
1
1
1
xyz
--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
/dev/nvme0	ZEP NV2000 1TB	 2B2QEXM7		2
[menu /dev/sda: 0 1 2 3]
 * Disk list:
    0. /dev/sda, KVX 480GB
    1. /dev/nvme0, ZEP NV2000 1TB
Select a disk by number: [menu /dev/nvme0: 0 1 2 3]
 * Disk list:
    0. /dev/sda, KVX 480GB
    1. /dev/nvme0, ZEP NV2000 1TB
Select a disk by number: [menu /dev/sda: 0 1 2 3]
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
sedutil-cli -n --query /dev/nvme0
sedutil-cli -n --query /dev/sda
--- status 0
