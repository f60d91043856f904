# Action 8 grants the typed users on the typed range after a yes. The users
# become "User<n> " words; user 0, repeats and empty pieces pass; range 8
# is allowed whatever the drive has, and a range answer that is not a
# number (a word, or beyond int) means range 0.
--- use owned
--- use access-lists
--- tool Lantivo --Add_ACE_Locking_range *
ACE added
--- input
11
pw
y

8
2
1,3
y

8
x
2x
y

8
8
9
y

8
0
0
y

8
1
1,1
y

8
1
,
y

8
99999999999
1,,2,
y

--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 11 17]
Please enter your admin password (w/o space): Your password is: pw
Are you sure this is your admin password? (Y/N): Password correct

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]

Access Right of Locking Range  0 :     Admin1
Access Right of Locking Range  1 :     Admin1  User1  User3


Which Locking Range you want to setup (0 ~ 8)? Please enter which users to give lock privilege (e.g. 1,2,3 ): The user list is: result:  User1 User3 
Are you sure to give them priviledge? (Y/N): Set Priviledge OK!!


Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]

Access Right of Locking Range  0 :     Admin1
Access Right of Locking Range  1 :     Admin1  User1  User3


Which Locking Range you want to setup (0 ~ 8)? Please enter which users to give lock privilege (e.g. 1,2,3 ): The user list is: result:  User2 
Are you sure to give them priviledge? (Y/N): Set Priviledge OK!!


Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]

Access Right of Locking Range  0 :     Admin1
Access Right of Locking Range  1 :     Admin1  User1  User3


Which Locking Range you want to setup (0 ~ 8)? Please enter which users to give lock privilege (e.g. 1,2,3 ): The user list is: result:  User9 
Are you sure to give them priviledge? (Y/N): Set Priviledge OK!!


Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]

Access Right of Locking Range  0 :     Admin1
Access Right of Locking Range  1 :     Admin1  User1  User3


Which Locking Range you want to setup (0 ~ 8)? Please enter which users to give lock privilege (e.g. 1,2,3 ): The user list is: result:  User0 
Are you sure to give them priviledge? (Y/N): Set Priviledge OK!!


Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]

Access Right of Locking Range  0 :     Admin1
Access Right of Locking Range  1 :     Admin1  User1  User3


Which Locking Range you want to setup (0 ~ 8)? Please enter which users to give lock privilege (e.g. 1,2,3 ): The user list is: result:  User1 User1 
Are you sure to give them priviledge? (Y/N): Set Priviledge OK!!


Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]

Access Right of Locking Range  0 :     Admin1
Access Right of Locking Range  1 :     Admin1  User1  User3


Which Locking Range you want to setup (0 ~ 8)? Please enter which users to give lock privilege (e.g. 1,2,3 ): The user list is: result:  
Are you sure to give them priviledge? (Y/N): Set Priviledge OK!!


Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]

Access Right of Locking Range  0 :     Admin1
Access Right of Locking Range  1 :     Admin1  User1  User3


Which Locking Range you want to setup (0 ~ 8)? Please enter which users to give lock privilege (e.g. 1,2,3 ): The user list is: result:  User1 User2 
Are you sure to give them priviledge? (Y/N): Set Priviledge OK!!


Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
sedutil-cli -n --query /dev/sda
Lantivo --list_User_ACE_Locking_range /dev/sda pw 0
Lantivo --list_User_ACE_Locking_range /dev/sda pw 1
Lantivo --list_User_ACE_Locking_range /dev/sda pw 2
Lantivo --Add_ACE_Locking_range /dev/sda pw 2 User1 User3
sedutil-cli -n --query /dev/sda
Lantivo --list_User_ACE_Locking_range /dev/sda pw 0
Lantivo --list_User_ACE_Locking_range /dev/sda pw 1
Lantivo --list_User_ACE_Locking_range /dev/sda pw 2
Lantivo --Add_ACE_Locking_range /dev/sda pw 0 User2
sedutil-cli -n --query /dev/sda
Lantivo --list_User_ACE_Locking_range /dev/sda pw 0
Lantivo --list_User_ACE_Locking_range /dev/sda pw 1
Lantivo --list_User_ACE_Locking_range /dev/sda pw 2
Lantivo --Add_ACE_Locking_range /dev/sda pw 8 User9
sedutil-cli -n --query /dev/sda
Lantivo --list_User_ACE_Locking_range /dev/sda pw 0
Lantivo --list_User_ACE_Locking_range /dev/sda pw 1
Lantivo --list_User_ACE_Locking_range /dev/sda pw 2
Lantivo --Add_ACE_Locking_range /dev/sda pw 0 User0
sedutil-cli -n --query /dev/sda
Lantivo --list_User_ACE_Locking_range /dev/sda pw 0
Lantivo --list_User_ACE_Locking_range /dev/sda pw 1
Lantivo --list_User_ACE_Locking_range /dev/sda pw 2
Lantivo --Add_ACE_Locking_range /dev/sda pw 1 User1 User1
sedutil-cli -n --query /dev/sda
Lantivo --list_User_ACE_Locking_range /dev/sda pw 0
Lantivo --list_User_ACE_Locking_range /dev/sda pw 1
Lantivo --list_User_ACE_Locking_range /dev/sda pw 2
Lantivo --Add_ACE_Locking_range /dev/sda pw 1
sedutil-cli -n --query /dev/sda
Lantivo --list_User_ACE_Locking_range /dev/sda pw 0
Lantivo --list_User_ACE_Locking_range /dev/sda pw 1
Lantivo --list_User_ACE_Locking_range /dev/sda pw 2
Lantivo --Add_ACE_Locking_range /dev/sda pw 0 User1 User2
sedutil-cli -n --query /dev/sda
--- status 0
