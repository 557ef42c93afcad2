#include "app/widgets/OptionsWindow.h"

#include <algorithm>
#include <exception>

#include "app/App.h"
#include "app/Language.h"
#include "app/widgets/OptionControls.h"
#include "core/ResourceManager.h"
#include "core/Subsystem.h"
#include "gui/Layout.h"
#include "gui/RadioButton.h"
#include "logging/Log.h"
#include "util/FileSystem.h"

namespace app {
namespace {

constexpr int kAntiAliasSamples[] = {1, 2, 4};
constexpr const char* kAntiAliasKeys[] = {"Option_AntiAliasOff", "Option_AntiAlias2",
                                          "Option_AntiAlias4"};

// An attribute of an object by its name in the language.
template <class T>
util::WeakPtr<script::TAttrib<T>> AttribNamed(const script::Reflected& object,
                                              const util::String& name) {
    return util::WeakPtr<script::TAttrib<T>>(
        dynamic_cast<script::TAttrib<T>*>(object.GetVariable(name).Get()));
}

bool HasWindow() {
    return core::Subsystem::IsAlive() && core::Subsystem::Get().HasWindow();
}

// The switch writes the window's setting and then makes the window follow it.
class FullscreenCheckbox : public OptionCheckbox {
public:
    explicit FullscreenCheckbox(const gui::BoolAttribWeakPtr& attrib)
        : OptionCheckbox("Option_Fullscreen", {attrib}, false) {}

protected:
    void CheckedChanged() override {
        OptionCheckbox::CheckedChanged();
        OptionsWindow::SetFullscreen(IsChecked());
    }
};

// A caption and the choices after it, on one line.
gui::ComponentPtr ChoiceRow(const util::String& key, const gui::RadioGroupPtr& choices) {
    const gui::LabelPtr caption(new gui::Label(Language::Get().Translate(key)));
    SetTooltipFor(*caption, key);
    return WindowStyle::Row({gui::ComponentPtr(caption), gui::ComponentPtr(choices)},
                            2 * WindowStyle::kSpacing);
}

gui::ComponentPtr Heading(const util::String& key) {
    const gui::LabelPtr heading = MakeOptionHeading(key);
    SetTooltipFor(*heading, key);
    return gui::ComponentPtr(heading);
}

}  // namespace

OptionsWindow::OptionsWindow()
    : Window("Options", Language::Get().Translate("Options")),
      m_languages(new gui::RadioGroup(0, 2 * WindowStyle::kSpacing)) {
    const util::WeakPtr<util::Pointee> self(this);
    const gui::ComponentPtr& body = GetBody();
    body->SetLayout(gui::LayoutPtr(new gui::ListLayout(1, WindowStyle::kSpacing)));
    const auto add = [&body](gui::Component* control) { body->Add(gui::ComponentPtr(control)); };

    // The language: a choice among the files there are.
    m_languageNames = FindLanguages();
    const util::String current =
        App::IsAlive() ? App::Get().GetModel().language->Get() : Language::Get().GetSelectedName();
    for (size_t i = 0; i < m_languageNames.size(); ++i) {
        SetTooltipFor(*m_languages->AddOption(m_languageNames[i]), "Option_Language");
        if (m_languageNames[i] == current) {
            m_languages->SetSelected(static_cast<int>(i));
        }
    }
    m_languages->GetOnChange().Add(self, [this]() {
        const int chosen = m_languages->GetSelected();
        if (chosen >= 0 && static_cast<size_t>(chosen) < m_languageNames.size()) {
            m_chosenLanguage = m_languageNames[static_cast<size_t>(chosen)];
        }
    });
    body->Add(ChoiceRow("Option_Language", m_languages));

    // The screen: settings of the window and of the drawing, where there is a window.
    body->Add(Heading("Option_Screen"));
    if (HasWindow()) {
        const core::Subsystem& system = core::Subsystem::Get();
        add(new FullscreenCheckbox(AttribNamed<bool>(system, "fullscreen")));
        const gui::RadioGroupPtr samples(new gui::RadioGroup(0, 2 * WindowStyle::kSpacing));
        const int wanted = system.GetCurrentWindowParams().antiAliasSamples;
        for (size_t i = 0; i < std::size(kAntiAliasKeys); ++i) {
            SetTooltipFor(*samples->AddOption(Language::Get().Translate(kAntiAliasKeys[i])),
                          "Option_AntiAlias");
            if (wanted >= kAntiAliasSamples[i]) {
                samples->SetSelected(static_cast<int>(i));
            }
        }
        // Written as the console would; the window takes it when it is made again.
        const util::WeakPtr<script::TAttrib<int>> antiAlias = AttribNamed<int>(system, "antiAlias");
        samples->GetOnChange().Add(self, [samples = samples.Get(), antiAlias]() {
            const int chosen = samples->GetSelected();
            if (const util::LockPtr<script::TAttrib<int>> live(antiAlias); live && chosen >= 0) {
                live->SetNative(kAntiAliasSamples[chosen]);
            }
        });
        body->Add(ChoiceRow("Option_AntiAlias", samples));
    }
    if (core::ResourceManager::IsAlive()) {
        add(new OptionCheckbox("Option_Shaders", {core::ResourceManager::Get().shaders}, false));
    }

    // How the interface behaves.
    body->Add(Heading("Option_Interface"));
    if (App::IsAlive()) {
        const AppGUIPtr& appGUI = App::Get().GetAppGUI();
        AppModel& model = App::Get().GetModel();
        add(new OptionCheckbox("Option_SimpleMode", {appGUI->simpleMode}, false));
        add(new OptionCheckbox("Option_FreeDrawing", {appGUI->freeDrawing}, false));
        add(new OptionCheckbox("Option_AutoGlue", {appGUI->autoGlue}, false));
        add(new OptionCheckbox("Option_LeftClickMenus", {appGUI->leftClickMenus}, false));
        add(new OptionCheckbox("Option_Borders", {model.borders}, false));
        add(new OptionSlider("Option_AutosaveTime", {model.autosaveTime}, 10, 600, true, false));
        add(new OptionSlider("Option_DPI", {model.dpi}, 48, 300, false, false));
    }

    // The sliders and the rows stretch to the window's width.
    for (const gui::ComponentPtr& child : body->GetChildren()) {
        if (dynamic_cast<gui::Slider*>(child.Get())) {
            const math::Vec2 border = child->GetOuterSize() - child->GetSize();
            child->SetSize(kWidth - border.x, child->GetSize().y);
        }
    }
    PlaceByDefault(*this, DefaultPlace::TopRight);
}

OptionsWindow::~OptionsWindow() = default;

std::vector<util::String> OptionsWindow::FindLanguages() {
    util::FileSystem& files = util::FileSystem::Get();
    std::vector<util::String> names;
    try {
        names = files.ListFiles(files.GetWorkDirectory() + util::FileSystem::GetLanguageFolder(),
                                "*.cfg");
    } catch (const std::exception&) {
        // English is built into every text's fall-back; with no folder it is all there is.
        return {"English"};
    }
    for (util::String& name : names) {
        name.resize(name.size() - 4);
    }
    std::sort(names.begin(), names.end());
    return names;
}

void OptionsWindow::Update(float dt) {
    Window::Update(dt);
    if (!m_chosenLanguage.empty()) {
        const util::String language = std::move(m_chosenLanguage);
        m_chosenLanguage.clear();
        ChooseLanguage(language);
    }
}

void OptionsWindow::ChooseLanguage(const util::String& language) {
    if (!App::IsAlive()) {
        return;
    }
    // The windows are made afresh, this one among them.
    const gui::ComponentPtr keep(this);
    App::Get().GetModel().language->SetNative(language);
    Language::Get().Load(language);
    App::Get().GetAppGUI()->SetUpWidgets();
}

void OptionsWindow::SetFullscreen(bool on) {
    if (!HasWindow()) {
        return;
    }
    core::Subsystem& system = core::Subsystem::Get();
    core::WindowParams params = system.GetCurrentWindowParams();
    int width = 0;
    int height = 0;
    const bool known = core::Subsystem::GetDesktopSize(width, height);
    if (on) {
        params.resolution =
            known ? math::TVector2<int>(width, height) : math::TVector2<int>(1024, 768);
    } else {
        params.resolution = math::TVector2<int>(known ? std::min(width, 1024) : 1024,
                                                known ? std::min(height, 768) : 768);
    }
    params.fullscreen = on;
    params.framed = !on;
    params.resizable = !on;
    try {
        system.CreateWindow(params);
    } catch (const std::exception& e) {
        Log(logging::Error, "Couldn't change the window: " + util::String(e.what()));
    }
}

}  // namespace app
