// Takes the network client out of the XML library: the library's accessor for URLs is defined here,
// ahead of its archive, so that the archive's own is never linked, nor the client behind it. The
// program cannot reach a network even when a document asks for it.
#include <xercesc/util/NetAccessors/Curl/CurlNetAccessor.hpp>
#include <xercesc/util/XMLExceptMsgs.hpp>
#include <xercesc/util/XMLNetAccessor.hpp>

XERCES_CPP_NAMESPACE_BEGIN

const XMLCh CurlNetAccessor::fgMyName[] = {u'n', u'o', u'n', u'e', 0};
int CurlNetAccessor::fgCurlInitCount = 0;

CurlNetAccessor::CurlNetAccessor() = default;
CurlNetAccessor::~CurlNetAccessor() = default;
void CurlNetAccessor::initCurl() {}
void CurlNetAccessor::cleanupCurl() {}

BinInputStream* CurlNetAccessor::makeNew(const XMLURL&, const XMLNetHTTPInfo*) {
    ThrowXML(NetAccessorException, XMLExcepts::NetAcc_UnsupportedMethod);
}

XERCES_CPP_NAMESPACE_END
