# Action 9 reads the ranges once, then removes all users from one range
# after another while the answer is Y or y, showing the access list after
# each; a range answer that is not a number means range 0.
--- use owned
--- use access-lists
--- input
11
pw
y

9
1
y
2
Y
x
N

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
Which Locking Range you want to setup (0~8)?
remove done


Access Right of Locking Range  0 :     Admin1
Access Right of Locking Range  1 :     Admin1  User1  User3


Do you want to continue removing? (Y/N)
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
Lantivo --Delete_AllUser_ACE_Locking_range /dev/sda pw 1
Lantivo --list_User_ACE_Locking_range /dev/sda pw 0
Lantivo --list_User_ACE_Locking_range /dev/sda pw 1
Lantivo --list_User_ACE_Locking_range /dev/sda pw 2
Lantivo --Delete_AllUser_ACE_Locking_range /dev/sda pw 2
Lantivo --list_User_ACE_Locking_range /dev/sda pw 0
Lantivo --list_User_ACE_Locking_range /dev/sda pw 1
Lantivo --list_User_ACE_Locking_range /dev/sda pw 2
Lantivo --Delete_AllUser_ACE_Locking_range /dev/sda pw 0
Lantivo --list_User_ACE_Locking_range /dev/sda pw 0
Lantivo --list_User_ACE_Locking_range /dev/sda pw 1
Lantivo --list_User_ACE_Locking_range /dev/sda pw 2
sedutil-cli -n --query /dev/sda
--- status 0
