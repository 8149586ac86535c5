#!/bin/sh
# Does for a sandboxed Ferrivane what the sandbox forbids it. The person installs it.
#
#   ferrivane-helper.sh open EXECUTABLE [--profile-directory=DIRECTORY] LINK
#       Hands the link to the running Chrome: its executable, started once more, passes it on.
#   ferrivane-helper.sh launch APPLICATION [--profile-directory=DIRECTORY] LINK
#       Starts Chrome: its bundle on macOS, its executable on Linux. Returns once it is up.
#   ferrivane-helper.sh profiles DESTINATION
#       Copies Chrome's list of profiles.
#
# Paths are absolute. Ends with 0 only if that was done; otherwise one line on standard error says
# why. POSIX sh and utilities, and readlink; setsid where there is one.
set -u

fail() {
    printf 'ferrivane-helper: %s\n' "$1" >&2
    exit "${2:-1}"
}

# --- Where Chrome keeps its files --------------------------------------------------------------
#
# On Linux as Ferrivane itself finds it (ChromeLocation.cc), with these differences: blanks around
# the keys and values of a desktop entry are those of ASCII, an entry whose Exec holds a line break is
# passed over, and Ferrivane itself is known by its file's name.
#
# locate sets user_data; program and command, the words of Exec one per line and each behind a dot,
# are empty when no desktop entry is found.
program='' command='' user_data='' contained='' has_own_folder=''

locate() {
    if [ "$(uname -s)" = Darwin ]; then
        user_data=${HOME:?}/Library/Application\ Support/Google/Chrome
        return
    fi
    home=${HOME-}
    case $home in
    /*) ;;
    *) home=$(getent passwd "$(id -u)" | cut -d : -f 6) ;;
    esac
    locate_entry google-chrome native google-chrome ||
        locate_entry com.google.Chrome native google-chrome ||
        locate_entry chromium native chromium ||
        locate_entry chromium-browser native chromium ||
        locate_entry google-chrome-beta native google-chrome-beta ||
        locate_entry google-chrome-unstable native google-chrome-unstable ||
        locate_entry com.google.Chrome flatpak google-chrome ||
        locate_entry org.chromium.Chromium flatpak chromium ||
        locate_entry chromium_chromium snap snap/chromium/common/chromium ||
        locate_nothing
}

locate_nothing() {
    program='' command='' contained='' has_own_folder=''
    case ${XDG_CONFIG_HOME-} in
    /*) user_data=$XDG_CONFIG_HOME/google-chrome ;;
    *) user_data=$home/.config/google-chrome ;;
    esac
}

# locate_entry ID native|flatpak|snap FOLDER
locate_entry() {
    find_entry "$1.desktop" || return
    case $2 in
    flatpak) [ -n "$is_flatpak" ] ;;
    *) [ -z "$is_flatpak" ] ;;
    esac || return
    # Ferrivane under another id would send each link round in a circle.
    case $(readlink -f -- "$program") in
    */Ferrivane) return 1 ;;
    esac
    contained=''
    if [ -n "$switched" ]; then
        user_data=$switched
        [ "$2" = native ] || contained=yes
        return
    fi
    case $2 in
    native)
        if [ -n "$own_folder" ]; then
            user_data=$own_folder
        elif [ -n "$own_base" ]; then
            user_data=$own_base/$3
        elif [ -n "$base" ]; then
            user_data=$base/$3
        else
            user_data=$home/.config/$3
        fi
        ;;
    flatpak) user_data=$home/.var/app/$1/config/$3 contained=yes ;;
    snap) user_data=$home/$3 contained=yes ;;
    esac
}

# find_entry NAME: reads the entry of this name that counts; fails when it starts no program.
find_entry() {
    case ${XDG_DATA_HOME-} in
    /*) folders=$XDG_DATA_HOME ;;
    *) folders=$home/.local/share ;;
    esac
    folders=$folders:${XDG_DATA_DIRS:-/usr/local/share:/usr/share}:
    while [ -n "$folders" ]; do
        folder=${folders%%:*}
        folders=${folders#*:}
        case $folder in
        /*) file=$(find_file "$folder/applications" "$1") || continue ;;
        *) continue ;;
        esac
        read_entry "$file" || continue
        [ -z "$is_hidden" ] || return 1
        [ -n "$program$command" ] || return 1
        find_program && return
    done
    return 1
}

# find_file FOLDER NAME: a dash in the name may stand for a folder.
find_file() (
    if [ -e "$1/$2" ]; then
        printf '%s\n' "$1/$2"
        exit
    fi
    head='' rest=$2
    while :; do
        case $rest in
        *-*) ;;
        *) exit 1 ;;
        esac
        head=$head${rest%%-*}
        rest=${rest#*-}
        if [ -n "$head" ] && [ -e "$1/$head" ]; then
            find_file "$1/$head" "$rest" && exit
        fi
        head=$head-
    done
)

# read_entry FILE: sets is_flatpak, is_hidden, program as it is written, command, switched,
# own_folder, own_base, base. Fails when the file is no entry of an application.
read_entry() {
    program='' command='' is_flatpak='' is_hidden='' switched='' has_own_folder=''
    own_folder=${CHROME_USER_DATA_DIR-} own_base=${CHROME_CONFIG_HOME-} base=${XDG_CONFIG_HOME-}
    [ -f "$1" ] && [ -r "$1" ] || return
    fields=$(LC_ALL=C awk "$entry_reader" <"$1") || return
    kind=''
    while IFS= read -r field; do
        value=${field#?}
        case $field in
        K*) kind=$value ;;
        H*) is_hidden=yes ;;
        F*) is_flatpak=yes ;;
        P*) program=$value ;;
        W*) command=$command.$value$newline ;;
        S*) switched=$value has_own_folder=yes ;;
        D*) own_folder=$value has_own_folder=yes ;;
        C*) own_base=$value has_own_folder=yes ;;
        X*) base=$value has_own_folder=yes ;;
        esac
    done <<END
$fields
END
    [ "$kind" = Application ] || [ -n "$is_hidden" ]
}

newline='
'

# Prints one field per line, its first letter telling which.
# shellcheck disable=SC2016
entry_reader='
function trimmed(text) {
    sub(/^[ \t\v\f\r]+/, "", text)
    sub(/[ \t\v\f\r]+$/, "", text)
    return text
}
function unescaped(text,    result, i, c) {
    result = ""
    for (i = 1; i <= length(text); ++i) {
        c = substr(text, i, 1)
        if (c != "\\" || i == length(text)) { result = result c; continue }
        c = substr(text, ++i, 1)
        if (c == "s") result = result " "
        else if (c == "n") result = result "\n"
        else if (c == "t") result = result "\t"
        else if (c == "r") result = result "\r"
        else if (c == "\\") result = result "\\"
        else result = result "\\" c
    }
    return result
}
# As a shell splits: blanks separate, quotes hold together, a backslash takes the next character.
function split_words(text,    i, c, next_c, quote, word, in_word, can_escape) {
    count = 0; quote = ""; word = ""; in_word = 0
    for (i = 1; i <= length(text); ++i) {
        c = substr(text, i, 1)
        next_c = substr(text, i + 1, 1)
        can_escape = next_c != "" && (quote == "" || (quote == "\"" && index("\"\\$`", next_c)))
        if (quote != "" && c == quote) quote = ""
        else if (quote == "" && (c == "\"" || c == "\047")) { quote = c; in_word = 1 }
        else if (c == "\\" && can_escape) { word = word next_c; ++i; in_word = 1 }
        else if (quote == "" && (c == " " || c == "\t")) {
            if (in_word) words[++count] = word
            word = ""; in_word = 0
        }
        else if (quote == "" && c == "#" && !in_word) break
        else { word = word c; in_word = 1 }
    }
    if (in_word) words[++count] = word
}
function without_codes(word,    plain, i, c) {
    plain = ""
    for (i = 1; i <= length(word); ++i) {
        c = substr(word, i, 1)
        if (c == "%" && i < length(word)) {
            if (substr(word, ++i, 1) == "%") plain = plain "%"
        } else plain = plain c
    }
    return plain
}
function base_name(path) { sub(/.*\//, "", path); return path }
function print_exec(    i, plain, first, variable, assigned) {
    first = 1
    if (count > 0 && base_name(words[1]) == "env") {
        for (first = 2; first <= count && (words[first] ~ /^-/ || words[first] ~ /=/); ++first)
            if (words[first] == "-u" || words[first] == "-C") ++first
    }
    if (first <= count) print "P" words[first]
    for (i = 1; i <= count; ++i) {
        if (words[i] ~ /^@@/) continue
        plain = without_codes(words[i])
        if (plain == "" && words[i] != "") continue
        print "W" plain
        if (plain ~ /^--user-data-dir=/) print "S" substr(plain, 17)
        variable = plain
        sub(/=.*/, "", variable)
        if (variable == plain || variable in assigned) continue
        assigned[variable] = 1
        plain = substr(plain, length(variable) + 2)
        if (variable == "CHROME_USER_DATA_DIR") print "D" plain
        if (variable == "CHROME_CONFIG_HOME") print "C" plain
        if (variable == "XDG_CONFIG_HOME") print "X" plain
    }
}
{
    line = trimmed($0)
    if (line ~ /^\[/) {
        if (in_entry) exit
        in_entry = line == "[Desktop Entry]"
        next
    }
    equals = index(line, "=")
    if (!in_entry || line ~ /^#/ || !equals) next
    key = trimmed(substr(line, 1, equals - 1))
    value = trimmed(substr(line, equals + 1))
    if (key == "Type") kind = value
    else if (key == "Exec") split_words(unescaped(value))
    else if (key == "Hidden") hidden = value == "true" || value == "1"
    else if (key == "X-Flatpak") flatpak = 1
}
END {
    print "K" kind
    if (hidden) print "H"
    if (flatpak) print "F"
    for (i = 1; i <= count; ++i) if (words[i] ~ /\n/) exit
    print_exec()
}'

# Makes program the path of what it names.
find_program() {
    case $program in
    /*)
        [ -f "$program" ] && [ -x "$program" ]
        return
        ;;
    '' | */*) return 1 ;;
    esac
    places=$PATH:
    while [ -n "$places" ]; do
        place=${places%%:*}
        places=${places#*:}
        case $place in
        /*) ;;
        *) continue ;;
        esac
        if [ -f "$place/$program" ] && [ -x "$place/$program" ]; then
            program=$place/$program
            return
        fi
    done
    return 1
}

# --- Starting it -------------------------------------------------------------------------------

# check_switches [--profile-directory=DIRECTORY] LINK
check_switches() {
    if [ $# -eq 2 ]; then
        case $1 in
        --profile-directory=?*) shift ;;
        *) fail 'the only switch is --profile-directory=' 2 ;;
        esac
    fi
    [ $# -eq 1 ] || fail 'one link is wanted, after at most one switch' 2
    # What stands behind white space is a switch to Chrome, too.
    blanks=$(printf ' \t\n\v\f\r.')
    blanks=${blanks%.}
    case ${1#"${1%%[!"$blanks"]*}"} in
    -*) fail 'Chrome would take the link for a switch' 2 ;;
    '') fail 'the link is empty' 2 ;;
    esac
}

check_executable() {
    case $1 in
    /*) ;;
    *) fail 'not an absolute path' 2 ;;
    esac
    if [ ! -f "$1" ] || [ ! -x "$1" ]; then
        fail 'no such executable'
    fi
}

# start SECONDS ALWAYS-WHOLE EXECUTABLE SWITCH…
#
# Returns with the status of a program that ends, and with 0 as soon as it has become the running
# browser, or when neither is known in time: then is_over is empty. The located browser is started
# by its whole command if told so, or if without the rest it would be another program or have another
# folder.
start() {
    limit=$1 whole=$2 executable=$3 is_over=yes
    shift 3
    locate
    lock=''
    if [ "$(uname -s)" = Darwin ]; then
        lock=$user_data/SingletonLock
        command=.$executable$newline
    elif [ "$program" = "$executable" ]; then
        lock=$user_data/SingletonLock
        [ -n "$whole$contained$has_own_folder" ] || command=.$executable$newline
    else
        command=.$executable$newline
    fi

    switches=$#
    while IFS= read -r word; do
        [ -z "$word" ] || set -- "$@" "${word#.}"
    done <<END
$command
END
    while [ "$switches" -gt 0 ]; do
        set -- "$@" "$1"
        shift
        switches=$((switches - 1))
    done

    before=$(readlink "$lock" 2>/dev/null)
    # Not ended by the end of whoever runs us, or of its terminal.
    if [ -n "$(command -v setsid)" ]; then
        set -- setsid "$@"
    fi
    "$@" </dev/null >/dev/null 2>&1 &
    process=$!

    looks=$((limit * 20))
    while [ "$looks" -gt 0 ]; do
        sleep 0.05
        if ! kill -0 "$process" 2>/dev/null; then
            wait "$process"
            return
        fi
        if [ -n "$lock" ]; then
            now=$(readlink "$lock" 2>/dev/null)
            if [ "$now" != "$before" ] && [ -S "$user_data/SingletonSocket" ]; then
                return 0
            fi
        fi
        looks=$((looks - 1))
    done
    is_over=''
}

# --- The three commands ------------------------------------------------------------------------

name=${1-}
[ $# -eq 0 ] || shift
case $name in
open)
    [ $# -ge 2 ] || fail 'usage: open EXECUTABLE [--profile-directory=DIRECTORY] LINK' 2
    check_executable "$1"
    executable=$1
    shift
    check_switches "$@"
    start 30 '' "$executable" "$@" || fail "Chrome ended with status $?"
    [ -n "$is_over" ] || fail 'Chrome has not taken the link within 30 s'
    ;;
launch)
    [ $# -ge 2 ] || fail 'usage: launch APPLICATION [--profile-directory=DIRECTORY] LINK' 2
    executable=$1
    shift
    check_switches "$@"
    if [ "$(uname -s)" = Darwin ] && [ -d "$executable" ]; then
        case $executable in
        /*) ;;
        *) fail 'not an absolute path' 2 ;;
        esac
        open -n -a "$executable" --args "$@" </dev/null >/dev/null 2>&1 ||
            fail "open ended with status $?"
        exit
    fi
    check_executable "$executable"
    start 3 yes "$executable" "$@" || fail "Chrome ended with status $?"
    ;;
profiles)
    [ $# -eq 1 ] || fail 'usage: profiles DESTINATION' 2
    case $1 in
    /*) ;;
    *) fail 'not an absolute path' 2 ;;
    esac
    [ ! -d "$1" ] || fail 'the destination is a folder'
    locate
    part=$1.$$.part
    umask 077
    # Never through what somebody else has put there.
    set -C
    trap 'rm -f -- "$part"' EXIT
    trap 'exit 1' HUP INT TERM
    { cat <"$user_data/Local State" >"$part"; } 2>/dev/null ||
        fail "cannot copy Chrome's list of profiles"
    mv -f -- "$part" "$1" 2>/dev/null || fail 'cannot write the destination'
    ;;
*)
    fail 'usage: open|launch|profiles ARGUMENT…' 2
    ;;
esac
