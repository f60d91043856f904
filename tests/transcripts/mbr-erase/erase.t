# Action 17 erases with the PSID only after a yes and only when it has 32
# characters; XQJ (and only so written) stands for the built-in PSID. The
# verdict comes from the first line of the tool's output.
--- use owned
--- tool sedutil-cli -n --yesIreallywanttoERASEALLmydatausingthePSID 80213657490812736459018273645091 /dev/sda
revertTper completed successfully
--- tool sedutil-cli -n --yesIreallywanttoERASEALLmydatausingthePSID ABCDEFGHIJKLMNOPQRSTUVWXYZ012345 /dev/sda
method status code NOT_AUTHORIZED
revertTper completed successfully
--- input
11
pw
y

17
XQJ
y

17
ABCDEFGHIJKLMNOPQRSTUVWXYZ012345
y

17
xqj
y

17
XQJX
Y

17
ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456
y

17
XQJ
N

--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 11 17]
Please enter your admin password (w/o space): Your password is: pw
Are you sure this is your admin password? (Y/N): Password correct

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Please enter your PSID (w/o space): Your PSID is: 80213657490812736459018273645091
Are you sure this is your PSID? (Y/N): Erase All Data OK

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Please enter your PSID (w/o space): Your PSID is: ABCDEFGHIJKLMNOPQRSTUVWXYZ012345
Are you sure this is your PSID? (Y/N): Erase All Data FAIL

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Please enter your PSID (w/o space): Your PSID is: xqj
Are you sure this is your PSID? (Y/N): PSID length is wrong

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Please enter your PSID (w/o space): Your PSID is: XQJX
Are you sure this is your PSID? (Y/N): PSID length is wrong

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Please enter your PSID (w/o space): Your PSID is: ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456
Are you sure this is your PSID? (Y/N): PSID length is wrong

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Please enter your PSID (w/o space): Your PSID is: 80213657490812736459018273645091
Are you sure this is your PSID? (Y/N): 
Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --yesIreallywanttoERASEALLmydatausingthePSID 80213657490812736459018273645091 /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --yesIreallywanttoERASEALLmydatausingthePSID ABCDEFGHIJKLMNOPQRSTUVWXYZ012345 /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --query /dev/sda
--- status 0
