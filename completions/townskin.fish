complete -c townskin -f
complete -c townskin -s h -l help -d 'Print a short help'
complete -c townskin -l version -d 'Print version, commit and compiler'
