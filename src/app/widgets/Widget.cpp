#include "app/widgets/Widget.h"

namespace app {

Widget::Widget(const util::String& name) : gui::Component(name) {
    SetReflectedName(name);
}

Widget::~Widget() = default;

}  // namespace app
