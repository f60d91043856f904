# Granting users the lock privilege on a range (8) and removing all users
# from a range (9) show who may access each range first.
--- use one-range
--- input
11 pw y

8 2 1,3 y

9 0 n

--- screen
$ sedutil-cli -n --scan
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 11 17]
Please enter your admin password (w/o space): Your password is: pw
Are you sure this is your admin password? (Y/N): $ sedutil-cli -n --listLockingRanges pw /dev/sda
Password correct

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]

$ Lantivo --list_User_ACE_Locking_range /dev/sda pw 0
Access Right of Locking Range  0 :     Admin1


Which Locking Range you want to setup (0 ~ 8)? Please enter which users to give lock privilege (e.g. 1,2,3 ): The user list is: result:  User1 User3 
Are you sure to give them priviledge? (Y/N): $ Lantivo --Add_ACE_Locking_range /dev/sda pw 2 User1 User3
Set Priviledge OK!!


Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
$ sedutil-cli -n --listLockingRanges pw /dev/sda
Which Locking Range you want to setup (0~8)?
$ Lantivo --Delete_AllUser_ACE_Locking_range /dev/sda pw 0
remove done


$ Lantivo --list_User_ACE_Locking_range /dev/sda pw 0
Access Right of Locking Range  0 :     Admin1


Do you want to continue removing? (Y/N)

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
