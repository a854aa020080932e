// Telling other components of a change, by fixed shell commands.
#pragma once

// Runs the notifications that a change asks for and -nonotify has left on: "web" after a change of
// platforms, consoles or caches, "daemon" (the console daemon's and the third one) after a change
// that the daemon must know of. No lock may be held: a command may run this program. A web
// notification that fails is recorded in the log, and nowhere else; the others' status is ignored.
void NotifyComponents(bool web, bool daemon);
