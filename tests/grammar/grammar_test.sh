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
        failures=$((failures + 1))
    fi
}

# The lines are the answer and a document, in which PMAP stands for a platform's property map and
# CONSOLE for a console.
pmap='<PropertyMap ID="7.pmap"><Property name="Name" readonly="false" value="p"/></PropertyMap>'
console='<Console ID="7:1"><PropertyMap ID="7:1.pmap"/></Console>'
while IFS=$'\t' read -r answer document; do
    document=${document//PMAP/$pmap}
    echo "${document//CONSOLE/$console}" >doc.xml
    check "$answer" doc.xml "$document"
done <<'TABLE'
good	<SystemMap/>
good	<SystemMap serial="007" security="true" version="2.1"> </SystemMap>
bad	<SystemMap serial="0"/>
bad	<SystemMap serial=" 7"/>
bad	<SystemMap security="yes"/>
bad	<SystemMap Serial="1"/>
bad	<SystemMap>text</SystemMap>
bad	<Map/>
bad	<SystemMap xmlns="urn:x"/>
good	<SystemMap xmlns:x="http://www.w3.org/2001/XMLSchema-instance" x:noNamespaceSchemaLocation="system-map.xsd"/>
good	<SystemMap noNamespaceSchemaLocation="system-map.xsd"/>
good	<SystemMap>CONSOLE<Platform ID="7">PMAP</Platform>CONSOLE</SystemMap>
bad	<SystemMap>PMAP</SystemMap>
bad	<SystemMap><Platform>PMAP</Platform></SystemMap>
bad	<SystemMap><Platform ID="x">PMAP</Platform></SystemMap>
bad	<SystemMap><Platform ID="7"/></SystemMap>
bad	<SystemMap><Platform ID="7">PMAP PMAP</Platform></SystemMap>
bad	<SystemMap><Platform ID="7">CONSOLE PMAP</Platform></SystemMap>
good	<SystemMap><Platform ID="7">PMAP CONSOLE<Cache/>CONSOLE CONSOLE</Platform></SystemMap>
bad	<SystemMap><Platform ID="7">PMAP<Cache/>CONSOLE<Cache/></Platform></SystemMap>
bad	<SystemMap><Console ID="7:1"><PropertyMap ID="7:1.pmap"/><Cache/></Console></SystemMap>
bad	<SystemMap><Console ID="7"><PropertyMap ID="7.pmap"/></Console></SystemMap>
bad	<SystemMap><Console ID="7:1"><PropertyMap ID="7:1"/></Console></SystemMap>
good	<SystemMap><Platform ID="7">PMAP<Cache b:a="1" xmlns:b="urn:b">t<Cache/><b:x y=""><Platform/></b:x></Cache></Platform></SystemMap>
good	<SystemMap><Console ID="7:1"><PropertyMap ID="7:1.pmap"><Property name="" readonly="true" type="any" value="&#9;"> <!-- x --> </Property></PropertyMap></Console></SystemMap>
bad	<SystemMap><Console ID="7:1"><PropertyMap ID="7:1.pmap"><Property name="n" readonly="no" value=""/></PropertyMap></Console></SystemMap>
bad	<SystemMap><Console ID="7:1"><PropertyMap ID="7:1.pmap"><Property name="n" value=""/></PropertyMap></Console></SystemMap>
bad	<SystemMap><Console ID="7:1"><PropertyMap ID="7:1.pmap"><Property name="n" readonly="true"/></PropertyMap></Console></SystemMap>
bad	<SystemMap><Console ID="7:1"><PropertyMap ID="7:1.pmap"><Property name="n" readonly="true" value="">x</Property></PropertyMap></Console></SystemMap>
TABLE

# Real runs, on a map of an earlier release that names its grammar. Its two platforms share an
# address, and the second has nothing but a property that -U removes.
cp "$grammars/system-map.xsd" usr/opt/tqs/config/
printf 'Server|M100\n' >usr/opt/tqs/config/models
printf 'Unknown|\n' >usr/opt/tqs/config/ostypes
property() { printf '<Property name="%s" readonly="false" value="%s"/>' "$@"; }
cat >$map <<END
<?xml version="1.0"?><!-- lab -->
<SystemMap xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance"
  xsi:noNamespaceSchemaLocation="system-map.xsd" serial="9" security="false" version="2.0">
<Platform ID="7"><PropertyMap ID="7.pmap"><!-- p -->$(property Name p1 Address 10.0.0.1 \
    "Port Number" 1 Model M100 Description "" Template "" Conn TS)</PropertyMap></Platform>
<Platform ID="8"><PropertyMap ID="8.pmap">$(property Name p2 Address 10.0.0.1)</PropertyMap>
<Cache/><Console ID="8:2001"><PropertyMap ID="8:2001.pmap">$(property Name c1 "Port Number" 2001 \
    Conn TS)</PropertyMap></Console></Platform></SystemMap>
END
printf '<?xml version="1.0"?>\n<Cache a="&lt;"><x:y xmlns:x="urn:x" x:z="1"><Cache/>text</x:y></Cache>\n' >cache.xml
check good $map "the map of an earlier release"
while read -r words; do
    # shellcheck disable=SC2086  # words of a command line
    "$program" $words <cache.xml >/dev/null 2>error.txt || { echo "$words: $(<error.txt)"; failures=$((failures + 1)); }
    check good $map "after $words"
done <<'RUNS'
-U
-add platform -name p3 -model M100 -addr 10.0.0.3 -port 1
-update cache -platform p1
-add system -name c2 -platform p1 -port 2002
-update cache -platform p1
-add system -name s1 -addr 10.0.0.4 -port 2003 -logging 0
-update system -name s1 -port 2004 -newname s2
-update platform -name p1 -port 3 -comment <&'">
-security true
-remove cache -platform p1
-remove system -name c1
-remove system -name s2
-remove platform -name p3
-remove platform -name p1
RUNS

# The compact form is the source of the other; only a machine with its compiler can compare them.
if command -v trang >/dev/null; then
    trang "$grammars/system-map.rnc" made.rng && cmp made.rng "$grammars/system-map.rng" ||
        failures=$((failures + 1))
fi
exit $((failures > 0))
