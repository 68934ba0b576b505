#include <MarlixLib/Lib.h>

#include <cstdio>

int main()
{
    Marlix::Lib::startup();
    const bool ok = Marlix::Lib::isStarted();
    Marlix::Lib::shutdown();
    std::puts(ok ? "consumer: ok" : "consumer: not started");
    return ok ? 0 : 1;
}
