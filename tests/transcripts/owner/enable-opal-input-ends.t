# Only a yes leaves the password loop of action 2, so input that ends
# before one ends the program; nothing is sent.
--- use factory
--- input
2
pw
n
again
--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 2 3]
Please enter your admin password (w/o space): Your password is: pw
Are you sure to use this password? (Y/N): Please enter your admin password (w/o space): Your password is: again
Are you sure to use this password? (Y/N): 
\ no final newline
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
--- status 0
