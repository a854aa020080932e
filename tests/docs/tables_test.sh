#!/bin/sh
# The documents' tables against the program: exit codes, and every option in manual and completion.
set -u
cd "$(dirname "$0")/../.." || exit 1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

# The manual as text, without overstrikes and line breaks inside words.
mandoc -Tascii -Owidth=200 man/tqsmgr.8 | sed "s/.$(printf '\b')//g" > "$work/manual"
sed -n 's/^ *k[A-Za-z]* = \([0-9]*\),.*/\1/p' src/base/exit_code.h > "$work/codes"
[ "$(wc -l < "$work/codes")" -eq 22 ] || failures=1
sed -n 's/^| \([0-9]*\) |.*/\1/p' README.md | diff "$work/codes" - || failures=1
sed -n '/^EXIT STATUS/,/^EXAMPLES/s/^ *\([0-9][0-9]*\) .*/\1/p' "$work/manual" |
    diff "$work/codes" - || failures=1

{
    sed -n 's/^ *{k[^"]*"[^"]*", *"\([a-z_]*\)".*/-\1/p' src/model/properties.cpp
    grep -oE -- '-(newname|platform)\b' src/commands/parse_command.cpp
} | sort -u > "$work/of_table"
[ "$(wc -l < "$work/of_table")" -ge 17 ] || failures=1
{
    cat "$work/of_table"
    sed -n '/usage_msg/,$p' src/frontend/usage.cpp | grep -oE -- '(^|[^a-z])-[a-zA-Z_]+' | grep -oE -- '-.*'
} | sort -u > "$work/options"
[ "$(wc -l < "$work/options")" -ge 28 ] || failures=1
while read -r option; do
    for document in "$work/manual" completion/tqsmgr; do
        if ! grep -qE -- "(^|[^a-zA-Z_-])$option([^a-zA-Z_-]|\$)" "$document"; then
            echo "$option is missing in $document"
            failures=1
        fi
    done
done < "$work/options"
# The manual has no option of an action besides.
sed -n '/^Options of the actions/,/^\.Sh/s/^\.It Fl \([a-z_]*\) .*/-\1/p' man/tqsmgr.8 | sort -u > "$work/of_actions"
diff "$work/of_table" "$work/of_actions" || failures=1
# The README's reading list has every folder, from the lowest up; none includes a higher one.
sed -n 's/^- .src\/\([a-z]*\)\/.*/\1/p' README.md > "$work/floors"
sort "$work/floors" > "$work/sorted"
(cd src && printf '%s\n' *) | diff - "$work/sorted" || failures=1
higher=
for floor in $(tac "$work/floors"); do
    [ -z "$higher" ] || ! grep -rnE "#include \"($higher)/" "src/$floor" || failures=1
    higher="${higher:+$higher|}$floor"
done
# Each message, up to its first value, stands in a manual page.
for page in man/*; do mandoc -Tascii -Owidth=500 "$page" | sed "s/.$(printf '\b')//g"; done | tr -s ' \n' ' ' > "$work/pages"
grep -rhoE '"[A-Z][a-z]+ [^"]*"' src --include=*.cpp --exclude=usage.cpp --exclude=tqs_main.cpp |
    sed 's/^"//; s/[\%"].*//; s/ *$//' | sort -u > "$work/messages"
[ "$(wc -l < "$work/messages")" -ge 50 ] || failures=1
while read -r message; do
    grep -qF -- "$message" "$work/pages" || { echo "no manual page tells of: $message"; failures=1; }
done < "$work/messages"
# Each test that the promises name exists.
tr '`' '\n' < docs/promises.md | grep -xE 'cases/[a-z]+|[A-Z][A-Za-z]+\.[A-Za-z]+' | grep -vxF Suite.Name |
    sort -u > "$work/tests"
[ "$(grep -c . "$work/tests")" -ge 15 ] || failures=1
while read -r test; do
    [ -f "tests/$test" ] || grep -qrE "TEST(_P)?\(${test%.*}, ${test#*.}\)" tests ||
        { echo "no such test: $test"; failures=1; }
done < "$work/tests"
# For each failure that the promises name there is a way to recover.
failures_in() { sed -n '/^|---/,$s/^| \([^|]*\) |.*/\1/p' "$1"; }
failures_in docs/promises.md > "$work/promised"
failures_in docs/howto.md | diff "$work/promised" - || failures=1

mandoc -Tlint -Wwarning man/* || failures=1
exit $failures
