# Action 4 with enable 1: protection answer 1 gives RW, 2 RO, any other
# number or a word LK, each as its own sequence of companion-tool commands.
# Answers are read from their leading digits (2x is 2), and a range answer
# that is not a number means range 0.
--- use owned
--- tool Lantivo *
success
--- input
11
pw
y

4
1
1
1

4
2x
2abc
1

4
abc
7
1

4
0
-1
1

4
2
x
1

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
Lantivo --disableLockingRange 1 pw RW /dev/sda
Lantivo --setLockingRange 1 N N pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
Lantivo --disableLockingRange 2 pw R /dev/sda
Lantivo --enableLockingRange 2 pw W /dev/sda
Lantivo --setLockingRange 2 N Y pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
Lantivo --enableLockingRange 0 pw RW /dev/sda
Lantivo --setLockingRange 0 Y Y pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
Lantivo --enableLockingRange 0 pw RW /dev/sda
Lantivo --setLockingRange 0 Y Y pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
Lantivo --enableLockingRange 2 pw RW /dev/sda
Lantivo --setLockingRange 2 Y Y pw /dev/sda
sedutil-cli -n --query /dev/sda
--- status 0
