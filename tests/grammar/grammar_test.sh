#!/bin/bash
# The two grammars of the map: both agree with a table of good and bad documents, and with what real
# runs make of a map.
#     grammar_test.sh PROGRAM      (the test program, whose paths are below the working directory)
set -u
program=$(realpath "$1")
grammars=$(realpath "$(dirname "$0")/../../grammar")
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
cd "$tree" && mkdir -p usr/opt/tqs/{config,events,logs} tmp || exit 1
map=usr/opt/tqs/config/SystemMap.xml
failures=0

# check GOOD|BAD FILE WHAT: the answer of both grammars.
check() {
    local -A codes=([good]=0 [bad]=3)
    xmllint --nonet --noout --relaxng "$grammars/system-map.rng" "$2" 2>relaxng.txt
    local relaxng=$?
    xmllint --nonet --noout --schema "$grammars/system-map.xsd" "$2" 2>schema.txt
    local schema=$?
    if [ $relaxng != "${codes[$1]}" ] || [ $schema != "${codes[$1]}" ]; then
        echo "should be $1: $3 (RELAX NG $relaxng, schema $schema)"
        cat relaxng.txt schema.txt "$2"
        failures=1
    fi
}

# The lines are the answer and a document below SystemMap, in which P stands for a platform's property
# map and C for a console with properties.
property() { printf '<Property name="%s" readonly="false" value="%s"/>' "$@"; }
while read -r answer document; do
    document=${document//P@/"<PropertyMap ID=\"7.pmap\">$(property Name p)</PropertyMap>"}
    document=${document//C@(/'<Console ID="7:1"><PropertyMap ID="7:1.pmap">'}
    echo "<SystemMap ${document//)C/</PropertyMap></Console>}</SystemMap>" >doc.xml
    check "$answer" doc.xml "$document"
done <<'TABLE'
good >
good serial="007" security="true" version="2.1">
bad serial="0">
bad security="yes">
bad >text
bad xmlns="urn:x">
good noNamespaceSchemaLocation="system-map.xsd">
good >C@()C<Platform ID="7">P@</Platform>C@()C
bad ><Platform>P@</Platform>
bad ><Platform ID="x">P@</Platform>
bad ><Platform ID="7"/>
bad ><Platform ID="7">C@()C P@</Platform>
good ><Platform ID="7">P@ C@()C<Cache b:a="1" xmlns:b="urn:b">t<Cache/><b:x y=""><Platform/></b:x></Cache>C@()C</Platform>
bad ><Platform ID="7">P@<Cache/>C@()C<Cache/></Platform>
bad ><Console ID="7"><PropertyMap ID="7.pmap"/></Console>
good >C@(<Property name="" readonly="true" type="any" value="&#9;"> <!-- x --> </Property>)C
bad >C@(<Property name="n" readonly="no" value=""/>)C
bad >C@(<Property name="n" readonly="true" value="">x</Property>)C
TABLE

# Real runs, on a map of an earlier release that names its grammar. Its two platforms share an
# address, and the second has nothing but a property that -U removes.
cp "$grammars/system-map.xsd" usr/opt/tqs/config/
printf 'Server|M100\n' >usr/opt/tqs/config/models
printf 'Unknown|\n' >usr/opt/tqs/config/ostypes
cat >$map <<END
<SystemMap xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance"
  xsi:noNamespaceSchemaLocation="system-map.xsd" serial="9" security="false" version="2.0">
<Platform ID="7"><PropertyMap ID="7.pmap">$(property Name p1 Address 10.0.0.1 \
    "Port Number" 1 Model M100 Description "" Template "" Conn TS)</PropertyMap></Platform>
<Platform ID="8"><PropertyMap ID="8.pmap">$(property Name p2 Address 10.0.0.1)</PropertyMap><Cache/></Platform></SystemMap>
END
printf '<?xml version="1.0"?>\n<Cache a="&lt;"><x:y xmlns:x="urn:x" x:z="1"><Cache/>text</x:y></Cache>\n' >cache.xml
while read -r words; do
    # shellcheck disable=SC2086  # words of a command line
    "$program" $words <cache.xml >/dev/null 2>error.txt || { echo "$words: $(<error.txt)"; failures=1; }
    check good $map "after $words"
done <<'RUNS'
-U
-add platform -name p3 -model M100 -addr 10.0.0.3 -port 1
-update cache -platform p1
-add system -name c2 -platform p1 -port 2002 -logging 0
-add system -name s1 -addr 10.0.0.4 -port 2003
-update system -name s1 -port 2004 -newname s2
-update platform -name p1 -port 3 -comment <&'">
-remove cache -platform p1
RUNS
exit $failures
