#include <xercesc/util/XMLInitializer.hpp>
#include <xercesc/validators/datatype/DatatypeValidatorFactory.hpp>

#include "library/library.h"

namespace {

// Opens the library's own start to a second call.
class Start : public xercesc::XMLInitializer {
  public:
    static void Again() { initializeStaticData(); }
};

}  // namespace

// The library's own list has made them at the start.
void MakeSchemaTables() {
    if (xercesc::DatatypeValidatorFactory::getBuiltInRegistry() == nullptr) {
        Start::Again();
    }
}
