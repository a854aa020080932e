// The floor under every run: starts the parser library, reads the document named by the one
// argument with handlers that do nothing, and exits. Linked and started as the program is, whatever
// is kept out of the library.
#include <memory>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/PlatformUtils.hpp>

int main(int argc, char** argv) {
    xercesc::XMLPlatformUtils::Initialize();
    const std::unique_ptr<xercesc::SAX2XMLReader> parser(
        xercesc::XMLReaderFactory::createXMLReader());
    xercesc::DefaultHandler nothing;
    parser->setContentHandler(&nothing);
    parser->setErrorHandler(&nothing);
    if (argc != 2) {
        return 1;
    }
    parser->parse(argv[1]);
    return 0;
}
