# Action 2 takes ownership with the typed password once it is confirmed,
# asking again until the answer is Y or y. The verdict comes from the first
# output line that holds a phrase, "complete" looked for first on each line:
# a failure is reported, output with neither phrase changes nothing; once
# complete, the drive is re-read and the whole menu is offered.
--- use factory
--- use query-disabled
--- use query-disabled
--- use query-enabled
--- use initial-setup-verdicts
--- input
2 pw Y

2 pw Y

2 first n second yes pw y

--- screen
$ sedutil-cli -n --scan
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 2 3]
Please enter your admin password (w/o space): Your password is: pw
Are you sure to use this password? (Y/N): $ sedutil-cli -n --initialSetup pw /dev/sda
Enable OPAL FAIL

Enter any key to continue...[menu /dev/sda: 0 1 2 3]
Please enter your admin password (w/o space): Your password is: pw
Are you sure to use this password? (Y/N): $ sedutil-cli -n --initialSetup pw /dev/sda

Enter any key to continue...[menu /dev/sda: 0 1 2 3]
Please enter your admin password (w/o space): Your password is: first
Are you sure to use this password? (Y/N): Please enter your admin password (w/o space): Your password is: second
Are you sure to use this password? (Y/N): Please enter your admin password (w/o space): Your password is: pw
Are you sure to use this password? (Y/N): $ sedutil-cli -n --initialSetup pw /dev/sda
$ sedutil-cli -n --query /dev/sda
$ sedutil-cli -n --listLockingRanges pw /dev/sda
Enable OPAL OK

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
