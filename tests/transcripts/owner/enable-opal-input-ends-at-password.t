# Input that ends at the first password prompt of action 2 ends the
# program at the confirmation; nothing is sent.
--- use factory
--- input
2
--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 2 3]
Please enter your admin password (w/o space): Your password is: 
Are you sure to use this password? (Y/N): 
\ no final newline
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
--- status 0
