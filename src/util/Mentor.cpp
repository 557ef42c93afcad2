#include "util/Mentor.h"

#include "logging/Log.h"

namespace util {

AbstractMentor::~AbstractMentor() = default;

void AbstractMentor::Load() {}

void AbstractMentor::Unload() {}

void AbstractMentor::ReportLoadFailure(const std::exception& e, const String& location) {
    logging::LogCaughtException(e, location);
    Log(logging::Error, e.what());
}

void AbstractMentor::ReportUnknownLoadFailure(const String& resourceTypeName,
                                              const String& location) {
    logging::LogCaughtUnknownException(location);
    Log(logging::Error, "Unknown error while loading " + resourceTypeName);
}

}  // namespace util
