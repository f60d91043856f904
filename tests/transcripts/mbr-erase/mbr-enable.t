# Action 13 turns the shadow MBR on only for Y or y; N, n, x and yes turn it
# off. The tool's output is not shown.
--- use owned
--- tool sedutil-cli -n --setMBREnable *
MBRDone set on 
MBREnable set 
--- input
11
pw
y

13
Y

13
y

13
N

13
n

13
x

13
yes

--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 11 17]
Please enter your admin password (w/o space): Your password is: pw
Are you sure this is your admin password? (Y/N): Password correct

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Enable(Y) or Disable(N) ?  
Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Enable(Y) or Disable(N) ?  
Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Enable(Y) or Disable(N) ?  
Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Enable(Y) or Disable(N) ?  
Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Enable(Y) or Disable(N) ?  
Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Enable(Y) or Disable(N) ?  
Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --setMBREnable ON pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --setMBREnable ON pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --setMBREnable OFF pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --setMBREnable OFF pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --setMBREnable OFF pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --setMBREnable OFF pw /dev/sda
sedutil-cli -n --query /dev/sda
--- status 0
