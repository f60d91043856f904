# With no range listed, action 4's bound shows as 2^64 - 1 and even 0 is
# refused.
--- use kvx-scan
--- use query-enabled
--- use three-ranges
--- tool sedutil-cli -n --listLockingRanges pw /dev/sda
Locking Range Configuration for /dev/sda
--- input
11
pw
y

4
0

--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 11 17]
Please enter your admin password (w/o space): Your password is: pw
Are you sure this is your admin password? (Y/N): Password correct

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Now status
=======================================================================================================
Locking Range     Begin    Length   ReadLock Enabled   WriteLock Enabled    ReadLocked    WriteLocked
=======================================================================================================
Which Locking Range you want to setup (0 ~ 18446744073709551615)? others:exit  Wrong index choosen!!

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
sedutil-cli -n --query /dev/sda
--- status 0
