# Completion of corvanectl for fish: the program itself lists the candidates.
function __corvanectl_candidates
    set -l before (commandline -opc)
    set -l current (commandline -ct)
    for line in (corvanectl complete -- $before[2..] "$current" 2>/dev/null)
        switch $line
            case :files
                __fish_complete_path $current
            case :folders
                __fish_complete_directories $current
            case '*'
                echo $line
        end
    end
end
complete -c corvanectl -f -a '(__corvanectl_candidates)'
