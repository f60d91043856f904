# Action 15 loads the image named, "default" standing for PBA.img and only
# when written so; the tool's lines are echoed. Only the first word is the
# name: the pause takes " i" of the rest, and "mage.img" at the action
# prompt ends the program.
--- use owned
--- tool sedutil-cli -n --loadPBAimage *
Writing PBA to /dev/sda
PBA image  written to /dev/sda
--- input
11
pw
y

15
default

15
Default

15
/boot/pba.img

15
my image.img
--- screen
/dev/sda	KVX 480GB	SBFK71F3		2
[menu /dev/sda: 0 1 11 17]
Please enter your admin password (w/o space): Your password is: pw
Are you sure this is your admin password? (Y/N): Password correct

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Enter image name/path ( or key 'default' ):   Please wait...   
Writing PBA to /dev/sda
PBA image  written to /dev/sda

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Enter image name/path ( or key 'default' ):   Please wait...   
Writing PBA to /dev/sda
PBA image  written to /dev/sda

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Enter image name/path ( or key 'default' ):   Please wait...   
Writing PBA to /dev/sda
PBA image  written to /dev/sda

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
Enter image name/path ( or key 'default' ):   Please wait...   
Writing PBA to /dev/sda
PBA image  written to /dev/sda

Enter any key to continue...[menu /dev/sda: 0 1 3 4 5 6 7 8 9 13 14 15 16 17]
--- calls
sedutil-cli -n --scan
sedutil-cli -n --query /dev/sda
sedutil-cli -n --listLockingRanges pw /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --loadPBAimage pw PBA.img /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --loadPBAimage pw Default /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --loadPBAimage pw /boot/pba.img /dev/sda
sedutil-cli -n --query /dev/sda
sedutil-cli -n --loadPBAimage pw my /dev/sda
sedutil-cli -n --query /dev/sda
--- status 0
