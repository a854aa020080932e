#!/usr/bin/env python3
"""Runs two builds of the program over the same documents and prints every difference in exit code,
message and written map:

    bench/compare_builds.py BUILD_FOLDER OTHER_BUILD_FOLDER

Both were made with -DTQS_TESTS=ON, one of them with -DTQS_STOCK_LIBRARY=ON. Each document is read as
a map, and as a platform's cache when it needs no other file. Ends with 1 when there is a difference.
"""
import collections
import os
import re
import subprocess
import sys
import tempfile

PROGRAMS = [os.path.join(os.path.abspath(folder), "tests", "tqsmgr-test") for folder in sys.argv[1:3]]
FOLDER = "usr/opt/tqs/config"
MAP = FOLDER + "/SystemMap.xml"
XSI = 'xmlns:i="http://www.w3.org/2001/XMLSchema-instance"'

TYPES = """string normalizedString token language Name NCName NMTOKEN NMTOKENS ID IDREF IDREFS ENTITY
ENTITIES NOTATION QName anyURI boolean decimal integer nonPositiveInteger negativeInteger long int
short byte nonNegativeInteger unsignedLong unsignedInt unsignedShort unsignedByte positiveInteger
float double hexBinary base64Binary date time dateTime gYear gYearMonth gMonth gMonthDay gDay
duration anySimpleType""".split()
VALUES = ["", " a  b ", "1", "-1", "+07.50", "1.5E3", "INF", "NaN", "1e999", "256", "99999999999999999999",
          "true", "en-US", "x:y", "i:y", "0F", "0f0", "QUJD", "QUJ", "http://h/%20?q#f", "://", "2000-02-29",
          "2001-02-29", "23:59:60", "24:00:00", "2001-01-01T00:00:00Z", "2001-01-01T25:00:00", "2001", "2001-13",
          "--02", "--02-30", "---31", "P1Y2M3DT4H5M6.7S", "P", "é", "a,b"]
PATTERNS = [r"\p{Lu}+", r"\P{L}*", r"\i\c*", r"\d{2,3}", r"[a-z-[aeiou]]+", r"\w+\s?\w*", r"\p{IsGreek}+", r"\p{IsNone}",
            r"\p{Nd}|\p{Sc}", r"(a|b)*c?", r".{3}", r"[^\W]+", r"\S+", r"\D", r"[\i-[:]][\c-[:]]*", "[", "(", "a{2,1}",
            r"\q", "*", r"\p{L}\p{M}*", r"[&#x370;-&#x3FF;]+", r"\p{C}", r"\p{IsBasicLatin}+", r"\I", r"\C"]
WORDS = ["", "A", "AB", "ab", "bcd", "aac", "12", "123", "α", "αβγ", "$", "٣", "a b", "a:b", "é", "_x-1", "日"]
FACETS = ["length value='2'", "minLength value='3'", "maxLength value='1'", "enumeration value='ab'", "whiteSpace value='collapse'",
          "length value='x'", "totalDigits value='2'", "fractionDigits value='1'", "minInclusive value='5'", "maxExclusive value='5'",
          "minExclusive value='q'", "maxInclusive value='5'", "nothing value='1'"]


def schema(attribute_type="", more="", content="", target=""):
    kind = f"type='s:{attribute_type}'" if attribute_type else ""
    return (f"<s:schema xmlns:s='http://www.w3.org/2001/XMLSchema' {target}>{more}<s:element name='SystemMap'>"
            f"<s:complexType>{content}<s:attribute name='security'/><s:attribute name='v' {kind}/>"
            "</s:complexType></s:element></s:schema>")


def with_schema(text, value="1", attributes="", inside=""):
    document = f"<SystemMap security='' v='{value}' {XSI} {attributes} i:noNamespaceSchemaLocation='s.xsd'>{inside}</SystemMap>"
    return document.encode(), {"s.xsd": text}


def restricted(base, facet, value):
    simple = f"<s:simpleType name='t'><s:restriction base='s:{base}'><s:{facet}/></s:restriction></s:simpleType>"
    return with_schema(schema(more=simple).replace("name='v' ", "name='v' type='t'"), value)


def schemas():
    yield from (with_schema(schema(kind), value) for kind in TYPES for value in VALUES)
    yield from (restricted("string", f"pattern value='{p}'", word) for p in PATTERNS for word in WORDS)
    yield from (restricted(base, facet, value) for facet in FACETS for base in ("string", "decimal", "hexBinary", "date")
                for value in ("ab", "5", "12.34", "0F", "2001-01-01"))
    for kind in ("list itemType='s:int'", "union memberTypes='s:int s:boolean'", "list itemType='t'", "union memberTypes='none'"):
        simple = f"<s:simpleType name='t'><s:{kind}/></s:simpleType>"
        yield from (with_schema(schema(more=simple).replace("name='v' ", "name='v' type='t'"), v) for v in ("1 2", "true", "x"))
    inner = ("<s:sequence><s:element name='a' nillable='true' minOccurs='0' maxOccurs='2'><s:complexType><s:simpleContent>"
             "<s:extension base='s:int'><s:attribute name='k' type='s:int'/></s:extension></s:simpleContent></s:complexType>"
             "</s:element><s:any minOccurs='0' processContents='{}'/></s:sequence><s:anyAttribute processContents='lax'/>")
    for process in ("lax", "strict", "skip", "none"):
        content = inner.format(process).split("<s:anyAttribute")[0]
        for inside in ("", "<a>1</a>", "<a>x</a>", "<a i:nil='true'/>", "<a i:nil='maybe'/>", "<a i:type='s:int'>1</a>", "<a/><b/>",
                       "<a k='1'>1</a><a k='1'>2</a>", "<a k='z'>1</a>", "<a>1</a><a>1</a><a>1</a>", "<b/>", "<SystemMap v='1'/>", "text"):
            unique = "<s:unique name='u'><s:selector xpath='a'/><s:field xpath='@k'/></s:unique></s:element></s:schema>"
            for text in (schema(content=content), schema(content=content).replace("</s:element></s:schema>", unique)):
                yield with_schema(text, inside=inside, attributes="xmlns:s='http://www.w3.org/2001/XMLSchema'")
    for step in ("include schemaLocation='o.xsd'", "import namespace='u' schemaLocation='o.xsd'", "redefine schemaLocation='o.xsd'",
                 "import namespace='u'", "include schemaLocation='none.xsd'", "include schemaLocation='http://127.0.0.1:9/x'", "import"):
        for target in ("", "targetNamespace='u'"):
            document, files = with_schema(schema(more=f"<s:{step}/>"))
            yield document, {**files, "o.xsd": schema(target=target).replace("SystemMap", "Other")}
    for bad in ("", "<s:schema/>", "<a/>", "<s:schema xmlns:s='http://www.w3.org/2001/XMLSchema'><s:element/></s:schema>",
                schema("none"), schema(target="targetNamespace='u'"), schema()[:-1], schema().replace("complexType", "simpleType")):
        yield with_schema(bad)
        yield f"<n:SystemMap xmlns:n='u' security='' {XSI} i:schemaLocation='u s.xsd'/>".encode(), {"s.xsd": bad}
    for attributes in ("i:type='x'", "i:nil='true'", "i:nil='x'", "i:type=''", "i:schemaLocation='u'", "i:schemaLocation=''", "i:other='1'",
                       "i:noNamespaceSchemaLocation=''", "i:noNamespaceSchemaLocation='none.xsd'"):
        yield f"<SystemMap security='' {XSI} {attributes}><a {attributes}/></SystemMap>".encode(), {}


def doctypes():
    models = ["EMPTY", "ANY", "(a)", "(a|b)*", "(a,b?)", "(#PCDATA)", "(#PCDATA|a)*", "((a,b)|(b,a))+", "(a,a)", "(", "(a|a)", "()"]
    insides = ["", "<a/>", "<b/>", "<a/><b/>", "<b/><a/><a/><b/>", "x"]
    kinds = ["CDATA ''", "ID #IMPLIED", "IDREF #IMPLIED", "IDREFS #IMPLIED", "NMTOKEN #REQUIRED", "NMTOKENS '1 2'", "(1|2) '2'",
             "(x|y) 'z'", "CDATA #FIXED '2'", "ENTITY #IMPLIED", "NOTATION (n) #IMPLIED", "WRONG 'x'", "CDATA '&e;'"]
    for attribute in ("", "v='1'", "v='1 2'", "v='&e;'", "v='&none;'"):
        yield from (("ANY", kind, attribute, "") for kind in kinds)
    yield from ((model, "CDATA ''", "", inside) for model in models for inside in insides)


def documents():
    yield from schemas()
    rest = "<!ELEMENT a EMPTY><!ELEMENT b ANY><!ENTITY e 'v'>"
    for model, kind, attribute, inside in doctypes():
        grammar = f"<!ELEMENT SystemMap {model}>{rest}<!ATTLIST SystemMap security CDATA '' v {kind}>"
        yield f"<!DOCTYPE SystemMap [{grammar}]><SystemMap security='x' {attribute}>{inside}</SystemMap>".encode(), {}
        outer = f"<!ENTITY % p '{model}'><![INCLUDE[{rest}]]><!ELEMENT SystemMap %p;><!ATTLIST SystemMap security CDATA '' v {kind}>"
        yield (f"<!DOCTYPE SystemMap SYSTEM 'd.dtd'><SystemMap security='x' {attribute}>{inside}</SystemMap>".encode(),
               {"d.dtd": outer})
    # Encodings that the library reads by itself: for others it has two tables, which differ.
    codecs = "ascii iso-8859-1 windows-1252 utf-8 utf-16 utf-16le utf-16be utf-32 ibm037"
    for codec in codecs.split():
        for text in ("plain", "é", "ž", "Ж", "ΑΩ", "日本", "한", "€", "😀", "~", "\\", "a&#233;", "a&#8364;"):
            document = f"<?xml version='1.0' encoding='{codec}'?><!--c--><SystemMap security='' v='{text}'/>"
            yield document.encode(codec, "ignore"), {}
    for name in ("none", "x-none", "UTF-9", "ISO-8859-99", "CP0", "1", "latin1", "l1", "ISO_8859-1", "US-ASCII"):
        yield f"<?xml version='1.0' encoding='{name}'?><SystemMap security='' v='x'/>".encode(), {}
    for bad in (b"\xff", b"\xc3", b"\x80", b"\x81\x30", b"\xfe\xff\x00<", b"\x00"):
        for codec in codecs.split():
            yield f"<?xml version='1.0' encoding='{codec}'?><SystemMap security='' v='".encode() + bad + b"'/>", {}


def run(program, words, document, stdin):
    with open(MAP, "wb") as out:
        out.write(document)
    done = subprocess.run([program, *words], input=stdin, capture_output=True, check=False)
    with open(MAP, "rb") as written:
        return done.returncode, done.stdout, re.sub(rb"tmp/tqsmgr\.\w+", b"copy", done.stderr), written.read()


def main():
    platform = b"<SystemMap serial='2'><Platform ID='1'><PropertyMap ID='1.pmap'><Property name='Name' value='p'/></PropertyMap></Platform></SystemMap>"
    codes = collections.Counter()
    different = 0
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        for made in (FOLDER, "usr/opt/tqs/logs", "usr/opt/tqs/events", "tmp"):
            os.makedirs(made)
        for document, files in documents():
            for name, text in files.items():
                with open(name, "w", encoding="utf-8") as out:
                    out.write(text)
                with open(os.path.join(FOLDER, name), "w", encoding="utf-8") as out:
                    out.write(text)
            runs = [(["-security", "true"], document, b"")]
            if not files:
                cache = document.replace(b"SystemMap", b"Cache")
                runs.append((["-update", "cache", "-platform", "p"], platform, cache))
            for words, on_map, stdin in runs:
                results = [run(program, words, on_map, stdin) for program in PROGRAMS]
                codes[results[0][0]] += 1
                if results[0] != results[1]:
                    different += 1
                    print(document.decode("utf-8", "replace"), files, *results, sep="\n  ")
    print(f"{codes.total()} runs of each, {different} differences; by exit code {dict(codes)}")
    sys.exit(different != 0)


if __name__ == "__main__":
    main()
