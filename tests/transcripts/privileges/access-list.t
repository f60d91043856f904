# Action 7 lists who may access each range, then pauses. When the tool's
# line for a range is not an access line, the listing stops with its own
# pause before the screen's.
--- use owned
--- use access-lists
--- tool Lantivo --list_User_ACE_Locking_range /dev/sda pw 1
method status code NOT_AUTHORIZED
--- input
11
pw
y

7

7
ab
--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 11 17]
Please enter your admin password (w/o space): Your password is: pw
Are you sure this is your admin password? (Y/N): Password correct

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]

Access Right of Locking Range  0 :     Admin1
Access Right of Locking Range  1 :     Admin1  User1  User3

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]

Access Right of Locking Range  0 :     Admin1
list lockingranges error: method status code NOT_AUTHORIZED

Enter any key to continue...
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
sedutil-cli -n --query /dev/sda
--- status 0
