#include "tavrin/base/Throw.h"

namespace Tavrin {

void ThrowStatus(ThrowSite site, StatusCode status) {
    throw StatusCodeException(site.GetFile(), site.GetFunction(), site.GetLine(), status);
}

}  // namespace Tavrin
