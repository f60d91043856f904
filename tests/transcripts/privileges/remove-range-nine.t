# Once the drive lists ten ranges, action 9 accepts range 9, which the
# removal itself refuses: nothing is sent for it.
--- use owned
--- use access-lists
--- tool sedutil-cli -n --listLockingRanges pw /dev/sda
Locking Range Configuration for /dev/sda
LR0 Begin 0 for 0
            RLKEna = N  WLKEna = N  RLocked = N  WLocked = N 
LR1 Begin 0 for 0
            RLKEna = N  WLKEna = N  RLocked = N  WLocked = N 
LR2 Begin 0 for 0
            RLKEna = N  WLKEna = N  RLocked = N  WLocked = N 
LR3 Begin 0 for 0
            RLKEna = N  WLKEna = N  RLocked = N  WLocked = N 
LR4 Begin 0 for 0
            RLKEna = N  WLKEna = N  RLocked = N  WLocked = N 
LR5 Begin 0 for 0
            RLKEna = N  WLKEna = N  RLocked = N  WLocked = N 
LR6 Begin 0 for 0
            RLKEna = N  WLKEna = N  RLocked = N  WLocked = N 
LR7 Begin 0 for 0
            RLKEna = N  WLKEna = N  RLocked = N  WLocked = N 
LR8 Begin 0 for 0
            RLKEna = N  WLKEna = N  RLocked = N  WLocked = N 
LR9 Begin 0 for 0
            RLKEna = N  WLKEna = N  RLocked = N  WLocked = N 
--- input
11
pw
y

9
9
n

--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 11 17]
Please enter your admin password (w/o space): Your password is: pw
Are you sure this is your admin password? (Y/N): Password correct

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Which Locking Range you want to setup (0~8)?
remove done


Access Right of Locking Range  0 :     Admin1
Access Right of Locking Range  1 :     Admin1  User1  User3


Do you want to continue removing? (Y/N)

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
Lantivo --list_User_ACE_Locking_range /dev/sda pw 0
Lantivo --list_User_ACE_Locking_range /dev/sda pw 1
Lantivo --list_User_ACE_Locking_range /dev/sda pw 2
Lantivo --list_User_ACE_Locking_range /dev/sda pw 3
Lantivo --list_User_ACE_Locking_range /dev/sda pw 4
Lantivo --list_User_ACE_Locking_range /dev/sda pw 5
Lantivo --list_User_ACE_Locking_range /dev/sda pw 6
Lantivo --list_User_ACE_Locking_range /dev/sda pw 7
Lantivo --list_User_ACE_Locking_range /dev/sda pw 8
Lantivo --list_User_ACE_Locking_range /dev/sda pw 9
sedutil-cli -n --query /dev/sda
--- status 0
