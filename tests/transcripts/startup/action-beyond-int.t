# A number beyond int at the action prompt exits like 0.
--- use factory
--- input
99999999999
--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 2 3]
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
--- status 0
