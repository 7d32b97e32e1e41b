complete -c townskin_check -f
complete -c townskin_check -s h -l help -d 'Print a short help'
complete -c townskin_check -l version -d 'Print version, commit and compiler'
complete -c townskin_check -a '(__fish_complete_directories)'
complete -c townskin_check -l json -d 'One object a line'
