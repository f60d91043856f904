# With several UUID lines the flash-lock password comes from the last.
--- use factory
--- tool sudo dmidecode
	UUID: aaaa-1111
	UUID: bbbb-2222
--- input
3
y

--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 2 3]
Are you sure to flash lock(Y/N)?
Please wait...   

Please poweroff 
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
sudo dmidecode
sedutil-cli -n --initialSetup bbbb2222 /dev/sda
--- status 0
