# offer.zsh FOLDER: reads command lines and writes what zsh offers behind each: the line, a tab, a candidate.
# zsh completes at its prompt only: so one is opened on a terminal of its own, and what would go onto its
# list is printed instead.
zmodload zsh/zpty
cat >start.zsh <<'END'
PROMPT=
stty -echo -onlcr
autoload -Uz compinit
compinit -C -D
compadd() {
    # calls that fill arrays belong to the completion's own work
    if [[ " $* " == *' '-[OAD]' '* ]]; then
        builtin compadd "$@"
        return
    fi
    local -a hits
    builtin compadd -O hits "$@"
    local hit
    for hit in $hits; do print -r -- "OFFER:$hit"; done
}
bindkey '^I' complete-word
finish() { zle kill-buffer; print END-OF-OFFERS }
zle -N finish
bindkey '^G' finish
print READY-NOW
END
zpty shell "zsh -f -i"
zpty -w shell "fpath=(${(q)1} \$fpath); . ./start.zsh"
zpty -r -m shell seen '*READY-NOW*'
while IFS= read -r line; do
    zpty -n -w shell "$line"$'\t\x07'
    zpty -r -m shell seen '*END-OF-OFFERS*'
    print -r -- $seen | tr -d '\r' | sed -n "s/^.*OFFER:/${line//\//\\/}\t/p"
done
zpty -d shell
