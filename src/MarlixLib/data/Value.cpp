#include <MarlixLib/data/Value.h>

#include <MarlixLib/base/Exception.h>

#include <new>

namespace Marlix {

namespace {
void* allocate(const TypeDefinition& type)
{
    return ::operator new(type.getSize(), std::align_val_t(type.getAlignment()));
}
} // namespace

Value::Value(SharedPtr<const TypeDefinition> type)
    : type(std::move(type))
{
    if (!this->type)
        return;
    void* block = allocate(*this->type);
    try {
        this->type->construct(block);
    } catch (...) {
        ::operator delete(block, std::align_val_t(this->type->getAlignment()));
        throw;
    }
    storage = block;
}

Value::Value(SharedPtr<const TypeDefinition> type, const void* source)
    : type(std::move(type))
{
    if (!this->type)
        return;
    void* block = allocate(*this->type);
    try {
        this->type->copyConstruct(block, source);
    } catch (...) {
        ::operator delete(block, std::align_val_t(this->type->getAlignment()));
        throw;
    }
    storage = block;
}

Value::Value(const Value& other)
    : Value(other.type, other.storage)
{
    if (other.type && !other.storage)
        Detail::throwStopException("data/Value", __LINE__);
}

Value::Value(Value&& other) noexcept
    : type(std::move(other.type))
    , storage(std::exchange(other.storage, nullptr))
{
}

Value& Value::operator=(const Value& other)
{
    if (this != &other) {
        Value copy(other);
        *this = std::move(copy);
    }
    return *this;
}

Value& Value::operator=(Value&& other) noexcept
{
    if (this != &other) {
        release();
        type = std::move(other.type);
        storage = std::exchange(other.storage, nullptr);
    }
    return *this;
}

Value::~Value()
{
    release();
}

void Value::release() noexcept
{
    if (storage) {
        type->destroy(storage);
        ::operator delete(storage, std::align_val_t(type->getAlignment()));
        storage = nullptr;
    }
}

bool Value::operator==(const Value& other) const
{
    if (!storage || !other.storage)
        return !storage && !other.storage;
    if (type != other.type && type->getName() != other.type->getName())
        return false;
    return type->equals(storage, other.storage);
}

} // namespace Marlix
