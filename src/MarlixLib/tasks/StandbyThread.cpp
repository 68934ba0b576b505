#include <MarlixLib/base/Exception.h>
#include <MarlixLib/tasks/StandbyThread.h>
#include <MarlixLib/tasks/UnhandledFailure.h>

#include <climits>
#include <cstring>
#include <pthread.h>
#include <unistd.h>

namespace Marlix {

static_assert(sizeof(pthread_t) <= sizeof(unsigned long), "the thread handle is kept in an unsigned long");

namespace {

// Cuts at most `limit` bytes without splitting a UTF-8 sequence.
String cutUtf8(const String& text, std::size_t limit)
{
    if (text.size() <= limit)
        return text;
    std::size_t end = limit;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
        --end;
    return text.substr(0, end);
}

std::size_t roundedStackSize(std::size_t requested)
{
    if (requested == 0)
        return 0;
    const long page = ::sysconf(_SC_PAGESIZE);
    const std::size_t pageSize = page > 0 ? std::size_t(page) : 4096;
    std::size_t size = std::max<std::size_t>(requested, PTHREAD_STACK_MIN);
    size = (size + pageSize - 1) / pageSize * pageSize;
    return size;
}

} // namespace

StandbyThread::StandbyThread(String name, std::size_t requestedStackSize, Body body)
    : name(std::move(name))
    , systemName(cutUtf8(this->name, SYSTEM_NAME_LIMIT))
    , stackSize(roundedStackSize(requestedStackSize))
    , body(std::move(body))
{
    if (!this->body)
        Detail::throwStopException("tasks/StandbyThread", __LINE__);
    pthread_attr_t attributes;
    if (int error = pthread_attr_init(&attributes))
        throw Exception("Cannot prepare the thread \"" + this->name + "\": " + std::strerror(error));
    int error = stackSize ? pthread_attr_setstacksize(&attributes, stackSize) : 0;
    if (error) {
        pthread_attr_destroy(&attributes);
        throw Exception("Cannot give the thread \"" + this->name + "\" a stack of " + std::to_string(stackSize)
            + " bytes: " + std::strerror(error));
    }
    pthread_t thread {};
    error = pthread_create(&thread, &attributes, &StandbyThread::entry, this);
    pthread_attr_destroy(&attributes);
    if (error)
        throw Exception("Cannot start the thread \"" + this->name + "\": " + std::strerror(error));
    handle = static_cast<unsigned long>(thread);
}

StandbyThread::~StandbyThread()
{
    requestStop();
    join();
    if (failure && !failureSeen.load())
        reportUnhandledFailure("thread " + name, failure);
}

void* StandbyThread::entry(void* raw)
{
    auto* self = static_cast<StandbyThread*>(raw);
    // Named from inside so that the name is in place before the body runs; a failure only costs the name.
    pthread_setname_np(pthread_self(), self->systemName.c_str());
    try {
        self->body(self->stopSource.get_token());
    } catch (...) {
        self->failure = std::current_exception();
    }
    self->running.store(false, std::memory_order_release);
    return nullptr;
}

void StandbyThread::requestStop() noexcept
{
    stopSource.request_stop();
}

bool StandbyThread::isStopRequested() const noexcept
{
    return stopSource.stop_requested();
}

std::stop_token StandbyThread::getStopToken() const noexcept
{
    return stopSource.get_token();
}

void StandbyThread::join()
{
    const auto thread = static_cast<pthread_t>(handle);
    if (pthread_equal(thread, pthread_self()))
        Detail::throwStopException("tasks/StandbyThread", __LINE__);
    std::lock_guard lock(joinMutex);
    if (joined)
        return;
    pthread_join(thread, nullptr);
    joined = true;
    // The body's captures may own resources that must go with the thread, not with this object.
    body = nullptr;
}

std::exception_ptr StandbyThread::getFailure() const
{
    if (isRunning())
        return nullptr;
    failureSeen.store(true);
    return failure;
}

} // namespace Marlix
