# fish completion for vastel-connect

complete -c vastel-connect -f
# -help has no line about itself.
complete -c vastel-connect -o help -o h -d 'Print the switches, and end'
complete -c vastel-connect \
    -a '(vastel-connect -help | string replace -rf "^  (-[a-z]+): (.*)" "\$1\t\$2")'
