# Completion of modiff for fish, to be read as vendor_completions.d/modiff.fish. What may follow is what the program
# itself says.

function __modiff_complete
    set -l words (commandline -opc)
    set -l word (commandline -ct)
    for line in ($words[1] --complete $words[2..-1] "$word" 2>/dev/null)
        switch $line
            case \tfiles
                __fish_complete_path (string replace -r '^--[^=]*=' '' -- $word)
            case \tdirectories
                __fish_complete_directories (string replace -r '^--[^=]*=' '' -- $word)
            case '*'
                echo $line
        end
    end
end

complete -c modiff -f -a '(__modiff_complete)'
