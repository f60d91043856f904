# A scan whose only drive is of another maker: the drive line is echoed,
# nothing is accepted, and the program ends with status -1.
--- tool sedutil-cli -n --scan
Scanning for Opal compliant disks
/dev/sdb   12  Other Maker 500GB                        EMT01B6Q
No more disks present ending scan
--- input
--- screen
/dev/sdb	Other Maker 500GB	EMT01B6Q		 12
No disks found
--- calls
sedutil-cli -n --scan
--- status 255
