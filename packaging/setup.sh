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
    if [ "$(id -u)" -eq 0 ] && getent group tqs > /dev/null; then
        chgrp tqs "$2"
    fi
    chmod "$1" "$2"
}
mkdir -p "$product/bin" "$product/config" "$product/events" "$product/logs"
# A strict umask has made it root's alone.
chmod 0755 "$product/bin"
for folder in 0755: 2770:/config 2770:/events 2770:/logs; do
    path=$product${folder#*:}
    # What an administrator has decided otherwise stays.
    if [ -n "${DESTDIR:-}" ] || ! dpkg-statoverride --list "$path" > /dev/null 2>&1; then
        give "${folder%%:*}" "$path"
    fi
done
for file in SystemMap.xml models ostypes; do
    path=$product/config/$file
    if [ ! -e "$path" ] && [ ! -L "$path" ]; then
        new=$(mktemp "$path.XXXXXX")
        cat "$starter/$file" > "$new"
        give 0660 "$new"
        mv -n "$new" "$path"
    fi
done
