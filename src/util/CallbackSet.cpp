#include "util/CallbackSet.h"

#include "logging/Log.h"

namespace util {

AbstractCallbackSet::~AbstractCallbackSet() = default;

void AbstractCallbackSet::FlushAll() {
    for (AbstractCallbackSet* set : Snapshot()) {
        set->Flush();
    }
}

void AbstractCallbackSet::ReportException(const std::exception& e, const String& location) {
    logging::LogCaughtException(e, location);
    Log(logging::Warning, "Exception caught in CallbackSet::CallAll: " + String(e.what()));
}

void AbstractCallbackSet::ReportUnknownException(const String& location) {
    logging::LogCaughtUnknownException(location);
    Log(logging::Warning, "Exception caught in CallbackSet::CallAll: unknown exception");
}

template class BasicCallbackSet<Callback>;
template class BasicCallbackSet<CallbackArg<float>, float>;

}  // namespace util
