# Action 8 without a yes sends nothing: n, yes, and a second word left on the
# users' line ("1, 2" lists only User1 and "2" answers the question).
--- use owned
--- use access-lists
--- input
11
pw
y

8
1
1,2
n

8
1
1,2
yes

8
1
1, 2

--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 11 17]
Please enter your admin password (w/o space): Your password is: pw
Are you sure this is your admin password? (Y/N): Password correct

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]

Access Right of Locking Range  0 :     Admin1
Access Right of Locking Range  1 :     Admin1  User1  User3


Which Locking Range you want to setup (0 ~ 8)? Please enter which users to give lock privilege (e.g. 1,2,3 ): The user list is: result:  User1 User2 
Are you sure to give them priviledge? (Y/N): 

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]

Access Right of Locking Range  0 :     Admin1
Access Right of Locking Range  1 :     Admin1  User1  User3


Which Locking Range you want to setup (0 ~ 8)? Please enter which users to give lock privilege (e.g. 1,2,3 ): The user list is: result:  User1 User2 
Are you sure to give them priviledge? (Y/N): 

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]

Access Right of Locking Range  0 :     Admin1
Access Right of Locking Range  1 :     Admin1  User1  User3


Which Locking Range you want to setup (0 ~ 8)? Please enter which users to give lock privilege (e.g. 1,2,3 ): The user list is: result:  User1 
Are you sure to give them priviledge? (Y/N): 

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
sedutil-cli -n --query /dev/sda
Lantivo --list_User_ACE_Locking_range /dev/sda pw 0
Lantivo --list_User_ACE_Locking_range /dev/sda pw 1
Lantivo --list_User_ACE_Locking_range /dev/sda pw 2
sedutil-cli -n --query /dev/sda
Lantivo --list_User_ACE_Locking_range /dev/sda pw 0
Lantivo --list_User_ACE_Locking_range /dev/sda pw 1
Lantivo --list_User_ACE_Locking_range /dev/sda pw 2
sedutil-cli -n --query /dev/sda
Lantivo --list_User_ACE_Locking_range /dev/sda pw 0
Lantivo --list_User_ACE_Locking_range /dev/sda pw 1
Lantivo --list_User_ACE_Locking_range /dev/sda pw 2
sedutil-cli -n --query /dev/sda
--- status 0
