# A number beyond int at the action prompt is stored as the largest int,
# which no menu offers: "Unsupported action", then status 0.
--- use factory
--- input
99999999999
--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 2 3]
Unsupported action
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
--- status 0
