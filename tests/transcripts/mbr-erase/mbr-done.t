# Action 14 sets MBR done only for Y or y; N, n, x and yes clear it. The
# tool's output is echoed.
--- use owned
--- tool sedutil-cli -n --setMBRDone *
MBRDone set 
--- input
11
pw
y

14
Y

14
y

14
N

14
n

14
x

14
yes

--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 11 17]
Please enter your admin password (w/o space): Your password is: pw
Are you sure this is your admin password? (Y/N): Password correct

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
SetMBRDone ON(Y)  or  OFF(N) ?  MBRDone set 

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
SetMBRDone ON(Y)  or  OFF(N) ?  MBRDone set 

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
SetMBRDone ON(Y)  or  OFF(N) ?  MBRDone set 

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
SetMBRDone ON(Y)  or  OFF(N) ?  MBRDone set 

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
SetMBRDone ON(Y)  or  OFF(N) ?  MBRDone set 

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
SetMBRDone ON(Y)  or  OFF(N) ?  MBRDone set 

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --setMBRDone ON pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --setMBRDone ON pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --setMBRDone OFF pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --setMBRDone OFF pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --setMBRDone OFF pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --setMBRDone OFF pw /dev/sda
sedutil-cli -n --query /dev/sda
--- status 0
