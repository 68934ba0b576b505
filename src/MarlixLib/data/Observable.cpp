#include <MarlixLib/data/Observable.h>

namespace Marlix {

namespace {
thread_local ObservationScope* innermostScope = nullptr;
}

ObservationScope::ObservationScope()
    : outer(innermostScope)
{
    innermostScope = this;
}

ObservationScope::~ObservationScope()
{
    innermostScope = outer;
}

void Observable::accessProperty(const PropertyDefinition& definition)
{
    if (innermostScope)
        innermostScope->accessed.insert(&definition);
}

ObservationScope* Observable::getCurrentScope()
{
    return innermostScope;
}

} // namespace Marlix
