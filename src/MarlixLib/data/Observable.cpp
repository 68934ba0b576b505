#include <MarlixLib/data/Observable.h>

#include <atomic>

namespace Marlix {

namespace {
thread_local ObservationScope* innermostScope = nullptr;
// Scopes open in the whole process. Reads of properties are frequent and scopes rare: while none is open anywhere, a
// read tests this word instead of reaching the thread-local pointer. A thread always sees its own scopes counted.
std::atomic<std::size_t> openScopes { 0 };
} // namespace

ObservationScope::ObservationScope()
    : outer(innermostScope)
{
    openScopes.fetch_add(1, std::memory_order_relaxed);
    innermostScope = this;
}

ObservationScope::~ObservationScope()
{
    innermostScope = outer;
    openScopes.fetch_sub(1, std::memory_order_relaxed);
}

void Observable::accessProperty(const PropertyDefinition& definition)
{
    if (openScopes.load(std::memory_order_relaxed) == 0)
        return;
    if (innermostScope)
        innermostScope->accessed.insert(&definition);
}

ObservationScope* Observable::getCurrentScope()
{
    return innermostScope;
}

} // namespace Marlix
