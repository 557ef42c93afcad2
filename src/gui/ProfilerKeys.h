#pragma once

#include "input/InputListener.h"

namespace gui {

// The keypad's commands to the profilers: minus switches the frame profiler's report on
// and off, the point shows the parent node, the digits a child and Enter the heaviest
// child; star switches the flat profiler's report.
class ProfilerKeys : public input::InputListener {
public:
    ProfilerKeys();
    void OnKey(input::KeyEvent& event) override;
};

}  // namespace gui
