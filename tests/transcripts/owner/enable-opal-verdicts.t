# The verdict of action 2 comes from the first output line that holds a
# phrase, "complete" being looked for first on each line: a failure, output
# with neither phrase and empty output leave the drive as it was, so action
# 2 is offered again; a line holding both phrases counts as complete.
--- use factory
--- use query-disabled
--- use query-disabled
--- use query-disabled
--- use query-disabled
--- use query-enabled
--- tool sedutil-cli -n --initialSetup pw /dev/sda
method status code NOT_AUTHORIZED
Session start failed rc = 1
One or more header fields have 0 length
EndSession Failed
takeOwnership failed
Initial setup failed - unable to take ownership
--- tool sedutil-cli -n --initialSetup pw /dev/sda
Invalid or unsupported disk /dev/sda
--- tool sedutil-cli -n --initialSetup pw /dev/sda
--- tool sedutil-cli -n --initialSetup pw /dev/sda
takeOwnership failed
takeOwnership complete
--- tool sedutil-cli -n --initialSetup pw /dev/sda
takeOwnership failed or takeOwnership complete
--- use three-ranges
--- input
2
pw
Y

2
pw
Y

2
pw
Y

2
pw
Y

2
pw
Y

--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 2 3]
Please enter your admin password (w/o space): Your password is: pw
Are you sure to use this password? (Y/N): Enable OPAL FAIL

Enter any key to continue...[menu /dev/sda: 0 1 2 3]
Please enter your admin password (w/o space): Your password is: pw
Are you sure to use this password? (Y/N): 
Enter any key to continue...[menu /dev/sda: 0 1 2 3]
Please enter your admin password (w/o space): Your password is: pw
Are you sure to use this password? (Y/N): 
Enter any key to continue...[menu /dev/sda: 0 1 2 3]
Please enter your admin password (w/o space): Your password is: pw
Are you sure to use this password? (Y/N): Enable OPAL FAIL

Enter any key to continue...[menu /dev/sda: 0 1 2 3]
Please enter your admin password (w/o space): Your password is: pw
Are you sure to use this password? (Y/N): Enable OPAL OK

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
sedutil-cli -n --initialSetup pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --initialSetup pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --initialSetup pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --initialSetup pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --initialSetup pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
sedutil-cli -n --query /dev/sda
--- status 0
