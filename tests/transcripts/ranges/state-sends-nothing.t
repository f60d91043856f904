# Action 4 sends nothing for a range past the list (3, -1), nor for any
# enable answer but 1 (0, 2, x).
# A range answer beyond int is not a number, so range 0.
--- use owned
--- tool Lantivo *
error
--- input
11
pw
y

4
3

4
-1

4
4294967295
1
0

4
1
1
2

4
1
1
x

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
Which Locking Range you want to setup (0 ~ 2)? others:exit  Wrong index choosen!!

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Now status
=======================================================================================================
Locking Range     Begin    Length   ReadLock Enabled   WriteLock Enabled    ReadLocked    WriteLocked
 0                   0         0           N                  N                 N              N
 1                2048      4096           Y                  Y                 Y              Y
 2                8192      8192           N                  Y                 N              Y
=======================================================================================================
Which Locking Range you want to setup (0 ~ 2)? others:exit  Wrong index choosen!!

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Now status
=======================================================================================================
Locking Range     Begin    Length   ReadLock Enabled   WriteLock Enabled    ReadLocked    WriteLocked
 0                   0         0           N                  N                 N              N
 1                2048      4096           Y                  Y                 Y              Y
 2                8192      8192           N                  Y                 N              Y
=======================================================================================================
Which Locking Range you want to setup (0 ~ 2)? others:exit  Which protection mode do you want to set (1: Read and Write; 2: Read Only; others: Read and Write LocK)? Enable or disable Locking Range (1: enable; others: diasble)? 
Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Now status
=======================================================================================================
Locking Range     Begin    Length   ReadLock Enabled   WriteLock Enabled    ReadLocked    WriteLocked
 0                   0         0           N                  N                 N              N
 1                2048      4096           Y                  Y                 Y              Y
 2                8192      8192           N                  Y                 N              Y
=======================================================================================================
Which Locking Range you want to setup (0 ~ 2)? others:exit  Which protection mode do you want to set (1: Read and Write; 2: Read Only; others: Read and Write LocK)? Enable or disable Locking Range (1: enable; others: diasble)? 
Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Now status
=======================================================================================================
Locking Range     Begin    Length   ReadLock Enabled   WriteLock Enabled    ReadLocked    WriteLocked
 0                   0         0           N                  N                 N              N
 1                2048      4096           Y                  Y                 Y              Y
 2                8192      8192           N                  Y                 N              Y
=======================================================================================================
Which Locking Range you want to setup (0 ~ 2)? others:exit  Which protection mode do you want to set (1: Read and Write; 2: Read Only; others: Read and Write LocK)? Enable or disable Locking Range (1: enable; others: diasble)? 
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
