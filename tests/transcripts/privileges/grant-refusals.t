# Action 8 refuses a range above 8 or negative, a user above the supported
# nine (also -1), and a user piece that is not a number, each with its own
# message and without sending anything.
--- use owned
--- use access-lists
--- input
11
pw
y

8
9

8
-1

8
1
10

8
1
1,-1

8
1
a

8
1
1,b,99

--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 11 17]
Please enter your admin password (w/o space): Your password is: pw
Are you sure this is your admin password? (Y/N): Password correct

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]

Access Right of Locking Range  0 :     Admin1
Access Right of Locking Range  1 :     Admin1  User1  User3


Which Locking Range you want to setup (0 ~ 8)? Wrong locking range choosen!!

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]

Access Right of Locking Range  0 :     Admin1
Access Right of Locking Range  1 :     Admin1  User1  User3


Which Locking Range you want to setup (0 ~ 8)? Wrong locking range choosen!!

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]

Access Right of Locking Range  0 :     Admin1
Access Right of Locking Range  1 :     Admin1  User1  User3


Which Locking Range you want to setup (0 ~ 8)? Please enter which users to give lock privilege (e.g. 1,2,3 ): Only support User1 ~ User9!!

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]

Access Right of Locking Range  0 :     Admin1
Access Right of Locking Range  1 :     Admin1  User1  User3


Which Locking Range you want to setup (0 ~ 8)? Please enter which users to give lock privilege (e.g. 1,2,3 ): Only support User1 ~ User9!!

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]

Access Right of Locking Range  0 :     Admin1
Access Right of Locking Range  1 :     Admin1  User1  User3


Which Locking Range you want to setup (0 ~ 8)? Please enter which users to give lock privilege (e.g. 1,2,3 ): Wrong user list input!!

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]

Access Right of Locking Range  0 :     Admin1
Access Right of Locking Range  1 :     Admin1  User1  User3


Which Locking Range you want to setup (0 ~ 8)? Please enter which users to give lock privilege (e.g. 1,2,3 ): Wrong user list input!!

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
