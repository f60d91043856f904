# A blank after the UUID leaves only the newline as the last piece, which is
# cut off: the flash-lock password is empty.
--- use factory
--- tool sudo dmidecode
	UUID: 4C4C4544-0042 
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
sedutil-cli -n --initialSetup /dev/sda
--- status 0
