# Without a UUID the flash-lock password is empty and is still sent. Its
# take-ownership fails, so the drive stays not enabled and the later steps
# send nothing, yet the program asks for power-off and ends.
--- use factory
--- tool sudo dmidecode
--- tool sedutil-cli -n --initialSetup *
method status code NOT_AUTHORIZED
Session start failed rc = 1
One or more header fields have 0 length
EndSession Failed
takeOwnership failed
Initial setup failed - unable to take ownership
--- input
3
y

--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 2 3]
Are you sure to flash lock(Y/N)?
Enable OPAL FAIL
Please wait...   

Please poweroff 
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
sudo dmidecode
sedutil-cli -n --initialSetup /dev/sda
--- status 0
