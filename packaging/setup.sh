#!/bin/sh
# Prepares /usr/opt/tqs after the program was put there: the group "tqs", whose members run the
# program, group and modes of the folders, and starter files where there are none. What exists is
# never overwritten, so an upgrade leaves the inventory alone.
#     setup.sh STARTER_FOLDER        below $DESTDIR, if that is set: then no group is created
#
# Members may change the inventory, but not the programs, which root runs as well.
set -e
starter=$1
product=${DESTDIR:-}/usr/opt/tqs

if [ -z "${DESTDIR:-}" ] && ! getent group tqs > /dev/null; then
    groupadd --system tqs
fi
give() {
    if [ "$(id -u)" -eq 0 ] && getent group "$2" > /dev/null; then
        chgrp "$2" "$3"
    fi
    chmod "$1" "$3"
}
mkdir -p "$product/bin" "$product/config" "$product/events" "$product/logs"
while read -r mode group folder; do
    path=$product$folder
    # What an administrator has decided otherwise stays.
    if [ -n "${DESTDIR:-}" ] || ! dpkg-statoverride --list "$path" > /dev/null 2>&1; then
        give "$mode" "$group" "$path"
    fi
done << END
0755 tqs
0755 root /bin
2770 tqs /config
2770 tqs /events
2770 tqs /logs
END
is_there() { [ -e "$product/config/$1" ] || [ -L "$product/config/$1" ]; }
# What the console daemon gets of the empty map comes with that map only.
for file in $(is_there SystemMap.xml || echo kfx.conf) SystemMap.xml models ostypes; do
    path=$product/config/$file
    if ! is_there "$file"; then
        # Not in a folder where members could put a link in its place.
        new=$(mktemp "$product/new.XXXXXX")
        cat "$starter/$file" > "$new"
        give 0660 tqs "$new"
        mv -nT "$new" "$path"
        rm -f "$new"
    fi
done
