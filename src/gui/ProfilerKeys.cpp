#include "gui/ProfilerKeys.h"

#include "input/KeyCodes.h"
#include "util/Profiler.h"
#include "util/Profiler2.h"

namespace gui {

ProfilerKeys::ProfilerKeys() : input::InputListener("ProfilerKeys") {}

void ProfilerKeys::OnKey(input::KeyEvent& event) {
    InputListener::OnKey(event);
    if (event.consumed || !event.down) {
        return;
    }
    util::Profiler& profiler = util::Profiler::Get();
    const input::SDLKey key = event.key;
    if (key == input::key::KPMinus) {
        profiler.SetOutputOn(!profiler.IsOutputOn());
        profiler.RequestReport();
    } else if (key == input::key::KPMultiply) {
        util::Profiler2& flat = util::Profiler2::Get();
        flat.SetOutputOn(!flat.IsOutputOn());
        flat.RequestReport();
    } else if (!profiler.IsOutputOn()) {
        return;
    } else if (key == input::key::KPPeriod) {
        profiler.ShowParent();
    } else if (key >= input::key::KP0 && key <= input::key::KP9) {
        profiler.ShowChild(static_cast<size_t>(key - input::key::KP0));
    } else if (key == input::key::KPEnter) {
        profiler.ShowHeaviestChild();
    } else {
        return;
    }
    event.consumed = true;
}

}  // namespace gui
