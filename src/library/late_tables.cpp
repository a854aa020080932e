// The library's list of what it sets up: at its start what every document needs, and when it is
// called again what schemas need, in the library's own order. See library.h.
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLInitializer.hpp>
#include <xercesc/validators/DTD/DTDGrammar.hpp>
#include <xercesc/validators/datatype/DatatypeValidatorFactory.hpp>

XERCES_CPP_NAMESPACE_BEGIN

void XMLInitializer::initializeStaticData() {
    try {
        if (DTDGrammar::fDefaultEntities == nullptr) {
            // Without the register of encodings, of which nobody is strict enough to ask.
            initializeXMLException();
            initializeXMLScanner();
            initializeXMLValidator();
            initializeDTDGrammar();
        } else {
            initializeRangeTokenMap();
            initializeRegularExpression();
            initializeXSDErrorReporter();
            initializeDatatypeValidatorFactory();
            initializeGeneralAttributeCheck();
            initializeXSValue();
            initializeComplexTypeInfo();
            // A schema is read into a document of the library's own.
            initializeDOMImplementationRegistry();
            initializeDOMImplementationImpl();
            initializeDOMDocumentTypeImpl();
            initializeDOMNodeListImpl();
            initializeDOMNormalizer();
            initializeXInclude();
        }
    } catch (...) {
        XMLPlatformUtils::panic(PanicHandler::Panic_AllStaticInitErr);
    }
}

void XMLInitializer::terminateStaticData() {
    if (DatatypeValidatorFactory::getBuiltInRegistry() != nullptr) {
        terminateXInclude();
        terminateDOMNormalizer();
        terminateDOMNodeListImpl();
        terminateDOMDocumentTypeImpl();
        terminateDOMImplementationImpl();
        terminateDOMImplementationRegistry();
        terminateComplexTypeInfo();
        terminateXSValue();
        terminateGeneralAttributeCheck();
        terminateDatatypeValidatorFactory();
        terminateXSDErrorReporter();
        terminateRegularExpression();
        terminateRangeTokenMap();
    }
    terminateDTDGrammar();
    terminateXMLValidator();
    terminateXMLScanner();
    terminateXMLException();
}

XERCES_CPP_NAMESPACE_END
