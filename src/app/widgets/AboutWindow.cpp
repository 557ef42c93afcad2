#include "app/widgets/AboutWindow.h"

#include "app/Language.h"
#include "app/widgets/OptionControls.h"
#include "gui/Layout.h"
#include "gui/LookAndFeel.h"
#include "gui/Text.h"
#include "util/Version.h"

namespace app {

AboutWindow::AboutWindow() : Window("About", Language::Get().Translate("About")) {
    const gui::ComponentPtr& body = GetBody();
    body->SetLayout(gui::LayoutPtr(new gui::ListLayout(1, WindowStyle::kSpacing)));
    const gui::LookAndFeel& look = gui::LookAndFeel::Get();
    body->Add(gui::ComponentPtr(new gui::Label(util::GetVersionString(), look.GetTitleFont())));
    body->Add(gui::ComponentPtr(new gui::Text(Language::Get().Translate("About_Text"), kWidth)));
    const gui::TextPtr credits(
        new gui::Text(Language::Get().Translate("About_Credits"), kWidth, gui::Align::Left));
    credits->SetTextColor(look.GetDimTextColor());
    body->Add(gui::ComponentPtr(credits));
    const ButtonRowPtr buttons(new ButtonRow(kWidth));
    buttons->AddButton(gui::ComponentPtr(MakeOptionButton("Close", [this]() { Close(); })));
    body->Add(gui::ComponentPtr(buttons));
    PlaceByDefault(*this, DefaultPlace::BottomCentre);
}

AboutWindow::~AboutWindow() = default;

}  // namespace app
