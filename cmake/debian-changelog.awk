# CHANGELOG.md as Debian writes a changelog, given the maintainer and the date.
function flush_item(    words, count, i, line) {
    if (item == "") return
    count = split(item, words, " ")
    line = "  *"
    for (i = 1; i <= count; i++) {
        if (length(line) + 1 + length(words[i]) > 78) {
            print line
            line = "   "
        }
        line = line " " words[i]
    }
    print line
    item = ""
}

function end_version() {
    flush_item()
    if (versions++) printf "\n -- %s  %s\n\n", maintainer, date
}

/^## / {
    end_version()
    sub(/,.*/, "", $2)
    printf "ferrivane (%s) unstable; urgency=medium\n\n", $2
}
/^- / { flush_item(); item = substr($0, 3) }
/^  / { item = item " " $0 }
END { end_version() }
