# Completion of Ferrivane's command line in fish.
complete -c Ferrivane -l test -x -d 'Show which profile a link would open in'
complete -c Ferrivane -l from -x -d 'With --test: the application that sends the link'
complete -c Ferrivane -l status -d 'Show files, browser and profiles'
complete -c Ferrivane -l set-default -d 'Make Ferrivane the default browser'
complete -c Ferrivane -l restore-default -d 'Make Google Chrome the default browser again'
complete -c Ferrivane -s h -l help -d 'Show the usage'
