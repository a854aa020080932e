// The library's table of an element's attributes, by which it finds two of one name where they are
// more than twenty. It sorts them by their local names alone, so that attributes that differ in
// their namespaces take the square of their number: it stays empty, and the handler of elements
// looks for names that stand twice.
#include <xercesc/framework/XMLAttr.hpp>
#include <xercesc/util/RefHash2KeysTableOf.hpp>

XERCES_CPP_NAMESPACE_BEGIN

template <>
void RefHash2KeysTableOf<XMLAttr>::put(void*, int, XMLAttr* const) {}

XERCES_CPP_NAMESPACE_END
