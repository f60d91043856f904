# Without ./sedutil-cli the shell's complaint is parsed as the scan: no drive.
--- input
--- screen
No disks found
--- calls
--- status 255
