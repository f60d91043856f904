# A password that the range listing refuses is reported and forgotten; an
# answer other than Y or y checks nothing. Each time 11 is offered again.
--- tool sedutil-cli -n --listLockingRanges bad /dev/sda
Locking Range Configuration for /dev/sda
LR0 Begin 0 for 0
            RLKEna = N  WLKEna = N  RLocked = N  WLocked = N 
method status code NOT_AUTHORIZED
Session start failed rc = 1
One or more header fields have 0 length
EndSession Failed
--- use owned
--- input
11
bad
y

11
pw
n

11
pw
yes

--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 11 17]
Please enter your admin password (w/o space): Your password is: bad
Are you sure this is your admin password? (Y/N): Password wrong, please try again

Enter any key to continue...[menu /dev/sda: 0 1 11 17]
Please enter your admin password (w/o space): Your password is: pw
Are you sure this is your admin password? (Y/N): 
Enter any key to continue...[menu /dev/sda: 0 1 11 17]
Please enter your admin password (w/o space): Your password is: pw
Are you sure this is your admin password? (Y/N): 
Enter any key to continue...[menu /dev/sda: 0 1 11 17]
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges bad /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --query /dev/sda
--- status 0
