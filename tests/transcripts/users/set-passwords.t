# Action 6 lists the users' status once, then enables users and sets their
# passwords while the answer is Y or y: 3abc is user 3, the tool's lines are
# echoed up to "has been enabled", and User9's password is set although
# enabling it failed.
--- use owned
--- tool Lantivo --list_User_ACE_Locking_range *
Admin1 User1 can access Locking Range 1
--- tool Lantivo --ListUserStatus pw /dev/sda
User1 : Enabled
User2 : Disabled
--- tool sedutil-cli -n --enableUser pw User0003 /dev/sda
User0003 has been enabled 
not shown
--- tool sedutil-cli -n --setPassword pw User0003 s3cret /dev/sda
User0003 password changed
--- tool sedutil-cli -n --enableUser pw User0009 /dev/sda
method status code NOT_AUTHORIZED
Session start failed rc = 1
One or more header fields have 0 length
EndSession Failed
--- tool sedutil-cli -n --setPassword pw User0009 nine /dev/sda
method status code NOT_AUTHORIZED
Session start failed rc = 1
One or more header fields have 0 length
EndSession Failed
--- input
11
pw
y

6
3abc
s3cret
y
9
nine
n

--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 11 17]
Please enter your admin password (w/o space): Your password is: pw
Are you sure this is your admin password? (Y/N): Password correct

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
User1 : Enabled, LR0 LR1 LR2 
User2 : Disabled, N/A
----------------------------
Which User you want to setup (1 ~ 9)? Please enter User3's password (w/o space): The password is: s3cret
User0003 has been enabled 
Enable User3 OK!!
Set User3 password OK!!

Do you want to continue setting user's password? (Y/N)
Which User you want to setup (1 ~ 9)? Please enter User9's password (w/o space): The password is: nine
method status code NOT_AUTHORIZED
Session start failed rc = 1
One or more header fields have 0 length
EndSession Failed
Enable User9 fail!!
Set User9 password fail!!

Do you want to continue setting user's password? (Y/N)

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
sedutil-cli -n --enableUser pw User0003 /dev/sda
sedutil-cli -n --setPassword pw User0003 s3cret /dev/sda
sedutil-cli -n --enableUser pw User0009 /dev/sda
sedutil-cli -n --setPassword pw User0009 nine /dev/sda
sedutil-cli -n --query /dev/sda
--- status 0
