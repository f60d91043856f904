# Action 2 asks for the password again until the answer is exactly Y or y,
# takes ownership with the last one, re-reads the drive and opens the menu
# of an owned drive whose password is held.
--- use factory
--- use query-enabled
--- tool sedutil-cli -n --initialSetup third /dev/sda
takeOwnership complete
Locking SP Activate Complete
LockingRange0 disabled 
Initial setup of TPer complete on /dev/sda
--- tool sedutil-cli -n --listLockingRanges third /dev/sda
Locking Range Configuration for /dev/sda
LR0 Begin 0 for 0
            RLKEna = N  WLKEna = N  RLocked = N  WLocked = N 
--- input
2
first
n
second
yes
third
y

--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 2 3]
Please enter your admin password (w/o space): Your password is: first
Are you sure to use this password? (Y/N): Please enter your admin password (w/o space): Your password is: second
Are you sure to use this password? (Y/N): Please enter your admin password (w/o space): Your password is: third
Are you sure to use this password? (Y/N): Enable OPAL OK

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
sedutil-cli -n --initialSetup third /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges third /dev/sda
sedutil-cli -n --query /dev/sda
--- status 0
