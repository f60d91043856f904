# Action 5 refuses range 0 (the global range), ranges past the list and
# answers that are not numbers.
--- use owned
--- input
11
pw
y

5
0

5
3

5
-1

5
x

5
99999999999

--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 11 17]
Please enter your admin password (w/o space): Your password is: pw
Are you sure this is your admin password? (Y/N): Password correct

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Now status
=======================================================================================================
Locking Range     Begin    Length   ReadLock Enabled   WriteLock Enabled    ReadLocked    WriteLocked
 0                   0         0           N                  N                 N              N
 1                2048      4096           Y                  Y                 Y              Y
 2                8192      8192           N                  Y                 N              Y
=======================================================================================================
Which LR you want to setup (1 ~ 2)?  others: exit  Wrong index choosen!!

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Now status
=======================================================================================================
Locking Range     Begin    Length   ReadLock Enabled   WriteLock Enabled    ReadLocked    WriteLocked
 0                   0         0           N                  N                 N              N
 1                2048      4096           Y                  Y                 Y              Y
 2                8192      8192           N                  Y                 N              Y
=======================================================================================================
Which LR you want to setup (1 ~ 2)?  others: exit  Wrong index choosen!!

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Now status
=======================================================================================================
Locking Range     Begin    Length   ReadLock Enabled   WriteLock Enabled    ReadLocked    WriteLocked
 0                   0         0           N                  N                 N              N
 1                2048      4096           Y                  Y                 Y              Y
 2                8192      8192           N                  Y                 N              Y
=======================================================================================================
Which LR you want to setup (1 ~ 2)?  others: exit  Wrong index choosen!!

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Now status
=======================================================================================================
Locking Range     Begin    Length   ReadLock Enabled   WriteLock Enabled    ReadLocked    WriteLocked
 0                   0         0           N                  N                 N              N
 1                2048      4096           Y                  Y                 Y              Y
 2                8192      8192           N                  Y                 N              Y
=======================================================================================================
Which LR you want to setup (1 ~ 2)?  others: exit  Wrong index choosen!!

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Now status
=======================================================================================================
Locking Range     Begin    Length   ReadLock Enabled   WriteLock Enabled    ReadLocked    WriteLocked
 0                   0         0           N                  N                 N              N
 1                2048      4096           Y                  Y                 Y              Y
 2                8192      8192           N                  Y                 N              Y
=======================================================================================================
Which LR you want to setup (1 ~ 2)?  others: exit  Wrong index choosen!!

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
sedutil-cli -n --query /dev/sda
--- status 0
