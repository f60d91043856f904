# A declined flash lock runs only the UUID lookup and goes back to the menu
# after the pause.
--- use factory
--- tool sudo dmidecode
	UUID: 0000-11
--- input
3
n

--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 2 3]
Are you sure to flash lock(Y/N)?

Enter any key to continue...[menu /dev/sda: 0 1 2 3]
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
sudo dmidecode
sedutil-cli -n --query /dev/sda
--- status 0
