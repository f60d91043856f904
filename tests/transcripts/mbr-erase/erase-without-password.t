# Action 17 is offered, and erases, before any admin password is entered.
--- use owned
--- tool sedutil-cli -n --yesIreallywanttoERASEALLmydatausingthePSID *
revertTper completed successfully
--- input
17
XQJ
y

--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 11 17]
Please enter your PSID (w/o space): Your PSID is: 80213657490812736459018273645091
Are you sure this is your PSID? (Y/N): Erase All Data OK

Enter any key to continue...[menu /dev/sda: 0 1 11 17]
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
sedutil-cli -n --yesIreallywanttoERASEALLmydatausingthePSID 80213657490812736459018273645091 /dev/sda
sedutil-cli -n --query /dev/sda
--- status 0
