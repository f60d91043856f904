# A negative action number is not offered either.
--- use factory
--- input
-1
--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 2 3]
Unsupported action
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
--- status 0
