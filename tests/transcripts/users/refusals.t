# Action 6 refuses user 0, negative users, users above the supported nine,
# words and numbers beyond int.
--- use owned
--- tool Lantivo --list_User_ACE_Locking_range *
Admin1 User1 can access Locking Range 1
--- tool Lantivo --ListUserStatus pw /dev/sda
User1 : Enabled
User2 : Disabled
--- tool sedutil-cli -n --enableUser pw User0002 /dev/sda
User0002 has been enabled 
--- input
11
pw
y

6
0

6
-1

6
10

6
abc

6
4294967297

--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 11 17]
Please enter your admin password (w/o space): Your password is: pw
Are you sure this is your admin password? (Y/N): Password correct

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
User1 : Enabled, LR0 LR1 LR2 
User2 : Disabled, N/A
----------------------------
Which User you want to setup (1 ~ 9)? Wrong index choosen!!

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
User1 : Enabled, LR0 LR1 LR2 
User2 : Disabled, N/A
----------------------------
Which User you want to setup (1 ~ 9)? Wrong index choosen!!

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
User1 : Enabled, LR0 LR1 LR2 
User2 : Disabled, N/A
----------------------------
Which User you want to setup (1 ~ 9)? Wrong index choosen!!

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
User1 : Enabled, LR0 LR1 LR2 
User2 : Disabled, N/A
----------------------------
Which User you want to setup (1 ~ 9)? Wrong index choosen!!

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
User1 : Enabled, LR0 LR1 LR2 
User2 : Disabled, N/A
----------------------------
Which User you want to setup (1 ~ 9)? Wrong index choosen!!

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
sedutil-cli -n --query /dev/sda
Lantivo --list_User_ACE_Locking_range /dev/sda pw 0
Lantivo --list_User_ACE_Locking_range /dev/sda pw 1
Lantivo --list_User_ACE_Locking_range /dev/sda pw 2
Lantivo --ListUserStatus pw /dev/sda
sedutil-cli -n --query /dev/sda
Lantivo --list_User_ACE_Locking_range /dev/sda pw 0
Lantivo --list_User_ACE_Locking_range /dev/sda pw 1
Lantivo --list_User_ACE_Locking_range /dev/sda pw 2
Lantivo --ListUserStatus pw /dev/sda
sedutil-cli -n --query /dev/sda
Lantivo --list_User_ACE_Locking_range /dev/sda pw 0
Lantivo --list_User_ACE_Locking_range /dev/sda pw 1
Lantivo --list_User_ACE_Locking_range /dev/sda pw 2
Lantivo --ListUserStatus pw /dev/sda
sedutil-cli -n --query /dev/sda
Lantivo --list_User_ACE_Locking_range /dev/sda pw 0
Lantivo --list_User_ACE_Locking_range /dev/sda pw 1
Lantivo --list_User_ACE_Locking_range /dev/sda pw 2
Lantivo --ListUserStatus pw /dev/sda
sedutil-cli -n --query /dev/sda
Lantivo --list_User_ACE_Locking_range /dev/sda pw 0
Lantivo --list_User_ACE_Locking_range /dev/sda pw 1
Lantivo --list_User_ACE_Locking_range /dev/sda pw 2
Lantivo --ListUserStatus pw /dev/sda
sedutil-cli -n --query /dev/sda
--- status 0
