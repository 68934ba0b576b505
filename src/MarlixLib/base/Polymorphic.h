#pragma once

namespace Marlix {

/// Base of every class that is used through pointers to its base: a virtual destructor and nothing else.
class Polymorphic
{
public:
    Polymorphic() = default;
    Polymorphic(const Polymorphic&) = default;
    Polymorphic(Polymorphic&&) = default;
    Polymorphic& operator=(const Polymorphic&) = default;
    Polymorphic& operator=(Polymorphic&&) = default;
    virtual ~Polymorphic() = default;
};

} // namespace Marlix
