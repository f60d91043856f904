# Action 16 runs its three commands only after Y or y, and reports success
# whatever the tool said; n, N and yes run nothing.
--- use owned
--- tool sedutil-cli -n --revertTPer *
method status code NOT_AUTHORIZED
Session start failed rc = 1
One or more header fields have 0 length
EndSession Failed
--- input
11
pw
y

16
y

16
Y

16
n

16
N

16
yes

--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 11 17]
Please enter your admin password (w/o space): Your password is: pw
Are you sure this is your admin password? (Y/N): Password correct

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Are you sure to disable? (Y/N): Disable ok !

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Are you sure to disable? (Y/N): Disable ok !

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Are you sure to disable? (Y/N): 
Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Are you sure to disable? (Y/N): 
Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Are you sure to disable? (Y/N): 
Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --disableLockingRange 0 pw /dev/sda
sedutil-cli -n --revertNoErase pw /dev/sda
sedutil-cli -n --revertTPer pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --disableLockingRange 0 pw /dev/sda
sedutil-cli -n --revertNoErase pw /dev/sda
sedutil-cli -n --revertTPer pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --query /dev/sda
--- status 0
