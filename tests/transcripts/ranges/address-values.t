# Action 5 sends start and length as typed, each a 32-bit int widened with
# its sign (-1 and -8 become huge), a word or a value beyond int as 0. The
# tool's lines are echoed up to the one that reports the range re-keyed;
# a refusal is reported as "SetupLockingRange Error".
--- use owned
--- tool sedutil-cli -n --setupLockingRange 1 3 5 pw /dev/sda
method status code INVALID_PARAMETER
setupLockingRange Failed 
--- tool sedutil-cli -n --setupLockingRange *
LockingRange1 reKeyed 
LockingRange2 reKeyed 
configured as unlocked range
--- input
11
pw
y

5
1
2048
4096

5
2x
100
-1

5
1
-8
8abc

5
1
x
2147483648

5
2
2147483647
7

5
1
3
5

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
Which LR you want to setup (1 ~ 2)?  others: exit  Where should this LR begin (align 8)? What is this LR's length (align 8)? LockingRange1 reKeyed 
Set done

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Now status
=======================================================================================================
Locking Range     Begin    Length   ReadLock Enabled   WriteLock Enabled    ReadLocked    WriteLocked
 0                   0         0           N                  N                 N              N
 1                2048      4096           Y                  Y                 Y              Y
 2                8192      8192           N                  Y                 N              Y
=======================================================================================================
Which LR you want to setup (1 ~ 2)?  others: exit  Where should this LR begin (align 8)? What is this LR's length (align 8)? LockingRange1 reKeyed 
LockingRange2 reKeyed 
Set done

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Now status
=======================================================================================================
Locking Range     Begin    Length   ReadLock Enabled   WriteLock Enabled    ReadLocked    WriteLocked
 0                   0         0           N                  N                 N              N
 1                2048      4096           Y                  Y                 Y              Y
 2                8192      8192           N                  Y                 N              Y
=======================================================================================================
Which LR you want to setup (1 ~ 2)?  others: exit  Where should this LR begin (align 8)? What is this LR's length (align 8)? LockingRange1 reKeyed 
Set done

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Now status
=======================================================================================================
Locking Range     Begin    Length   ReadLock Enabled   WriteLock Enabled    ReadLocked    WriteLocked
 0                   0         0           N                  N                 N              N
 1                2048      4096           Y                  Y                 Y              Y
 2                8192      8192           N                  Y                 N              Y
=======================================================================================================
Which LR you want to setup (1 ~ 2)?  others: exit  Where should this LR begin (align 8)? What is this LR's length (align 8)? LockingRange1 reKeyed 
Set done

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Now status
=======================================================================================================
Locking Range     Begin    Length   ReadLock Enabled   WriteLock Enabled    ReadLocked    WriteLocked
 0                   0         0           N                  N                 N              N
 1                2048      4096           Y                  Y                 Y              Y
 2                8192      8192           N                  Y                 N              Y
=======================================================================================================
Which LR you want to setup (1 ~ 2)?  others: exit  Where should this LR begin (align 8)? What is this LR's length (align 8)? LockingRange1 reKeyed 
LockingRange2 reKeyed 
Set done

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Now status
=======================================================================================================
Locking Range     Begin    Length   ReadLock Enabled   WriteLock Enabled    ReadLocked    WriteLocked
 0                   0         0           N                  N                 N              N
 1                2048      4096           Y                  Y                 Y              Y
 2                8192      8192           N                  Y                 N              Y
=======================================================================================================
Which LR you want to setup (1 ~ 2)?  others: exit  Where should this LR begin (align 8)? What is this LR's length (align 8)? method status code INVALID_PARAMETER
setupLockingRange Failed 
SetupLockingRange Error

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
sedutil-cli -n --setupLockingRange 1 2048 4096 pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
sedutil-cli -n --setupLockingRange 2 100 18446744073709551615 pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
sedutil-cli -n --setupLockingRange 1 18446744073709551608 8 pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
sedutil-cli -n --setupLockingRange 1 0 0 pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
sedutil-cli -n --setupLockingRange 2 2147483647 7 pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
sedutil-cli -n --setupLockingRange 1 3 5 pw /dev/sda
sedutil-cli -n --query /dev/sda
--- status 0
