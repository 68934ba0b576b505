#pragma once

namespace Marlix {

/// Base of every class that is used through pointers to its base: a virtual destructor and nothing else.
class Polymorphic
{
public:
    Polymorphic() = default;
    Polymorphic(const Polymorphic&) = default; ///< Copyable, so derived classes decide themselves.
    Polymorphic(Polymorphic&&) = default; ///< Movable, so derived classes decide themselves.
    Polymorphic& operator=(const Polymorphic&) = default; ///< Copy-assignable, as derived classes decide.
    Polymorphic& operator=(Polymorphic&&) = default; ///< Move-assignable, as derived classes decide.
    virtual ~Polymorphic() = default;
};

} // namespace Marlix
