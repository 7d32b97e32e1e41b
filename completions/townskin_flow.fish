complete -c townskin_flow -f
complete -c townskin_flow -s h -l help -d 'Print a short help'
complete -c townskin_flow -l version -d 'Print version, commit and compiler'
