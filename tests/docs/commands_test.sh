#!/bin/sh
# Runs the commands of the documents, each document in a private tree of its own, its blocks in order:
#     ```console     lines after "$ " (and "> ") are run; what they print must be the other lines
#     ```sh          all lines are run; no command may fail
#     ```cron        the commands of the lines, in the same way
#     ```yaml        those of the tasks, with the files that they are given as input
#     .Bd -literal   all lines, among the EXAMPLES and DIAGNOSTICS of a manual page
# Other blocks are not run. /usr/opt/tqs and /tmp in them are the private tree's.
#     commands_test.sh PROGRAM      (the test program, whose paths are below the working directory; the
#                                    other one stands beside it)
set -u
program=$(realpath "$1")
source=$(realpath "$(dirname "$0")/../..")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/path" && ln -s "$program" "$work/path/tqsmgr" && ln -s "$(dirname "$program")/tqs-test" "$work/path/tqs"
PATH=$work/path:$PATH
failures=0
blocks=0

# Writes the blocks of the document $1 to the folder $2: N.sh, the line where it begins in N.line,
# and for a console N.out, what it must print.
take_blocks() {
    awk -v folder="$2" '
    function begin(a_kind) { kind = a_kind; base = sprintf("%s/%03d", folder, ++n); print NR > (base ".line")
                             if (kind == "console") printf "" > (base ".out") }
    function command(line) { gsub(/\/usr\/opt\/tqs/, "usr/opt/tqs", line); gsub(/\/tmp\//, "tmp/", line)
                             print line > (base ".sh") }
    /^```/ { if (kind != "") kind = ""
             else if ($0 == "```console") begin("console")
             else if ($0 == "```sh" || $0 == "```yaml" || $0 == "```cron") begin(substr($0, 4))
             else kind = "other"
             next }
    /^\.Sh / { examples = ($0 ~ /EXAMPLES|DIAGNOSTICS/) }
    examples && /^\.Bd -literal/ { begin("sh"); next }
    examples && /^\.Ed/ { kind = ""; next }
    examples { gsub(/\\e/, "\\"); gsub(/\\-/, "-"); gsub(/\\&/, "") }
    kind == "sh" || (kind == "yaml" && sub(/.* ansible.builtin.command: /, "")) { command($0) }
    kind == "yaml" && sub(/.* cmd: /, "") { with_input = $0 }
    kind == "yaml" && sub(/.* stdin: .*file., ./, "") { command(with_input " < " substr($0, 1, index($0, "\047") - 1)) }
    kind == "cron" { for (i = 1; i <= 6; i++) sub(/^[^ ]+ /, ""); command($0) }
    kind == "console" && /^[$>] / { command(substr($0, 3)); next }
    kind == "console" { gsub(/\/usr\/opt\/tqs/, "usr/opt/tqs"); print > (base ".out") }
    ' "$1"
}

for document in "$source"/README.md "$source"/docs/*.md "$source"/man/*.[58]; do
    folder=$work/$(basename "$document")
    mkdir -p "$folder/blocks" "$folder/tree" && cd "$folder/tree" || exit 1
    mkdir -p usr/opt/tqs/bin usr/opt/tqs/config usr/opt/tqs/events usr/opt/tqs/logs etc/init.d tmp
    cp "$source"/packaging/starter/* usr/opt/tqs/config
    cp -P "$work"/path/* usr/opt/tqs/bin
    for notified in usr/opt/tqs/bin/notifyweb usr/opt/tqs/bin/notifylrp etc/init.d/kfxd; do
        printf '#!/bin/sh\n' > $notified && chmod +x $notified
    done
    take_blocks "$document" "$folder/blocks"
    for block in "$folder"/blocks/*.sh; do
        [ -e "$block" ] || continue
        blocks=$((blocks + 1))
        expected=${block%.sh}.out
        if [ -e "$expected" ]; then
            sh "$block" < /dev/null > "$folder/printed" 2>&1
            diff "$expected" "$folder/printed" && continue
        else
            sh -e "$block" < /dev/null > "$folder/printed" 2>&1 && continue
            cat "$folder/printed"
        fi
        echo "$document:$(cat "${block%.sh}.line"): the block fails"
        failures=$((failures + 1))
    done
done
echo "$blocks blocks were run"
[ $failures -eq 0 ] && [ $blocks -gt 0 ]
