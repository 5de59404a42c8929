# fish completion for vastel-connect

complete -c vastel-connect -f
complete -c vastel-connect -o log -d 'Print a line for each step of each link'
complete -c vastel-connect -o jsonlog -d 'Print one JSON object for each step of each link'
complete -c vastel-connect -o help -o h -d 'Print the switches, and end'
complete -c vastel-connect -o changelog -d 'Print what changed, and end'
complete -c vastel-connect -o showuri -d 'Print how a link is made, and end'
