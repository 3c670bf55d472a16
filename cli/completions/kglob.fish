# Completion of kglob for fish.

complete -c kglob -s r -l root-folder -r -a '(__fish_complete_directories)' -d 'Search below the folder'
complete -c kglob -s d -l include-dot-files -d 'Match names that begin with a dot'
complete -c kglob -s 0 -l null -d 'End each match with a NUL byte'
complete -c kglob -l stats -d 'Tell what the search has read'
complete -c kglob -l library -r -F -d 'Load the search library from the file'
complete -c kglob -s h -l help -d 'Show a short help'
complete -c kglob -l version -d 'Show the version'
