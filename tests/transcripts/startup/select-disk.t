# The drive list and its selection: a drive without Opal is never queried
# and offers only 0 and 1. A word selects the first drive, and its failed
# read ends the program at the next action prompt.
--- use no-opal-and-locked
--- input
1 1
1 xyz
--- screen
$ sedutil-cli -n --scan
/dev/sda	KVX HDD	CC45		 No
/dev/nvme0	ZEP NV2000 1TB	 2B2QEXM7		2
[unqueried menu /dev/sda: 0 1]
 * Disk list:
    0. /dev/sda, KVX HDD
    1. /dev/nvme0, ZEP NV2000 1TB
Select a disk by number: [menu /dev/nvme0: 0 1 11 17]
 * Disk list:
    0. /dev/sda, KVX HDD
    1. /dev/nvme0, ZEP NV2000 1TB
Select a disk by number: [unqueried menu /dev/sda: 0 1]
