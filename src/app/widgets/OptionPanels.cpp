#include "app/widgets/OptionPanels.h"

#include <algorithm>
#include <cmath>

#include "app/App.h"
#include "app/Background.h"
#include "app/Language.h"
#include "app/PopupActions.h"
#include "app/Scene.h"
#include "app/entities/FiniteGeomEntity.h"
#include "app/entities/HingeEntity.h"
#include "app/entities/PenEntity.h"
#include "app/entities/SpringEntity.h"
#include "app/widgets/WidgetFactory.h"
#include "gui/AbstractButton.h"
#include "gui/Layout.h"
#include "gui/LookAndFeel.h"
#include "gui/Primitives.h"
#include "math/MathUtil.h"
#include "physics/Body.h"
#include "physics/SPH.h"
#include "physics/Simulation.h"
#include "util/StringUtil.h"

namespace app {
namespace {

constexpr const char* kPanelIds[] = {kColorOptions,  kGeomOptions,      kCollisionOptions,
                                     kSpringOptions, kHingeOptions,     kPenOptions,
                                     kEntityInfo,    kBackgroundOptions};
// The layers a user can tell apart; the attribute has room for more.
constexpr int kCollisionLayers = 8;
constexpr float kSwatchSide = 20;

// The colours a user reaches for first: clear, apart from each other and from the sky.
const math::Vec4 kSwatches[] = {
    {0.85f, 0.2f, 0.2f, 1}, {0.95f, 0.55f, 0.15f, 1}, {0.95f, 0.85f, 0.2f, 1},
    {0.3f, 0.75f, 0.3f, 1}, {0.25f, 0.5f, 0.9f, 1},   {0.6f, 0.35f, 0.8f, 1},
    {0.45f, 0.3f, 0.2f, 1}, {0.2f, 0.2f, 0.2f, 1},
};

const std::vector<EntityPtr>& SceneOrder() {
    return Scene::Get().GetEntities();
}

void AddTo(gui::Component& body, gui::Component* control) {
    body.Add(gui::ComponentPtr(control));
}

// A slider over the attribute of the objects that have one; none where none has.
template <class Object, class Member>
void AddSlider(gui::Component& body, const char* key, const std::vector<Object*>& objects,
               Member Object::*member, double min, double max, bool logarithmic = false) {
    std::vector<gui::FloatAttribWeakPtr> attribs = AttribsOf<float>(objects, member);
    if (!attribs.empty()) {
        AddTo(body, new OptionSlider(key, std::move(attribs), min, max, logarithmic, true));
    }
}

template <class Object, class Member>
void AddCheckbox(gui::Component& body, const char* key, const std::vector<Object*>& objects,
                 Member Object::*member) {
    std::vector<gui::BoolAttribWeakPtr> attribs = AttribsOf<bool>(objects, member);
    if (!attribs.empty()) {
        AddTo(body, new OptionCheckbox(key, std::move(attribs), true));
    }
}

// Paints the selection in one colour with a click.
class ColorSwatch : public gui::AbstractButton {
public:
    explicit ColorSwatch(const math::Vec4& color) : gui::AbstractButton("PanelSwatch") {
        SetColor(color);
        SetSize(kSwatchSide, kSwatchSide);
        SetTooltipFor(*this, "PanelSwatch");
    }

    void DrawComp() override {
        const math::Vec2 size = GetSize();
        const gui::LookAndFeel& look = gui::LookAndFeel::Get();
        gui::FillRect(0, 0, size.x, size.y, GetColor());
        gui::FrameRect(0, 0, size.x, size.y, IsMouseOver() ? 2.0f : 1.0f,
                       IsMouseOver() ? look.GetHoverColor() : look.GetDimTextColor());
    }
};

// The motion of the selected shapes' bodies, read again every frame.
class EntityInfoLines : public gui::Component {
public:
    explicit EntityInfoLines(const std::vector<GeomEntity*>& shapes)
        : gui::Component("EntityInfoLines") {
        SetLayout(gui::LayoutPtr(new gui::ListLayout(1, WindowStyle::kSpacing)));
        for (GeomEntity* shape : shapes) {
            m_shapes.emplace_back(shape);
        }
        for (const char* key : kKeys) {
            m_captions.push_back(Language::Get().Translate(key));
            const gui::LabelPtr label(new gui::Label(m_captions.back()));
            SetTooltipFor(*label, key);
            m_labels.push_back(label);
            Add(gui::ComponentPtr(label));
        }
        Refresh();
    }

    void Update(float dt) override {
        gui::Component::Update(dt);
        Refresh();
    }

private:
    static constexpr const char* kKeys[] = {"PanelMass",   "PanelSpeed",    "PanelVelocity",
                                            "PanelEnergy", "PanelPosition", "PanelAngle"};

    void Refresh() {
        // Shapes fixed together move as one: each body counts once, the ground never.
        const physics::BodyPtr& ground = physics::Simulation::Get().GetWorldBody();
        std::vector<physics::BodyPtr> bodies;
        for (const util::WeakPtr<GeomEntity>& weak : m_shapes) {
            const util::LockPtr<GeomEntity> shape(weak);
            const physics::BodyPtr body = shape ? shape->GetBody() : physics::BodyPtr();
            if (body && body != ground &&
                std::find(bodies.begin(), bodies.end(), body) == bodies.end()) {
                bodies.push_back(body);
            }
        }
        float mass = 0;
        float energy = 0;
        math::Vec2 momentum(0, 0);
        math::Vec2 moment(0, 0);
        for (const physics::BodyPtr& body : bodies) {
            mass += body->GetMass();
            energy += body->GetKineticEnergy();
            momentum += body->velocity * body->GetMass();
            moment += body->position * body->GetMass();
        }
        const bool known = mass > 0 && math::IsFinite(mass);
        const math::Vec2 velocity = known ? momentum / mass : math::Vec2(0, 0);
        const util::String values[] = {
            Number("%.3g kg", mass, known),
            Number("%.2f m/s", velocity.Length(), known),
            Pair("%.2f, %.2f m/s", velocity, known),
            Number("%.3g J", energy, known),
            Pair("%.2f, %.2f m", known ? moment / mass : math::Vec2(0, 0), known),
            Number("%.1f", bodies.size() == 1 ? bodies[0]->angle * 180 / math::Pi : 0,
                   bodies.size() == 1),
        };
        for (size_t i = 0; i < m_labels.size(); ++i) {
            m_labels[i]->SetText(m_captions[i] + values[i]);
        }
    }

    static util::String Number(const char* format, double value, bool known) {
        util::String text;
        if (!known) {
            return "-";
        }
        util::AppendFormatted(text, format, value);
        return text;
    }
    static util::String Pair(const char* format, const math::Vec2& value, bool known) {
        util::String text;
        if (!known) {
            return "-";
        }
        util::AppendFormatted(text, format, static_cast<double>(value.x),
                              static_cast<double>(value.y));
        return text;
    }

    std::vector<util::WeakPtr<GeomEntity>> m_shapes;
    std::vector<util::String> m_captions;
    std::vector<gui::LabelPtr> m_labels;
};

// Sets a switch of every selected hinge, as one step.
void SetHingeSwitch(const GroupPtr& group, script::AttribPtr<bool> HingeEntity::*member, bool flip,
                    bool value) {
    const std::vector<HingeEntity*> hinges = MembersOfKind<HingeEntity>(*group, SceneOrder());
    RecordStep("UndoSliderChange", [&]() {
        for (HingeEntity* hinge : hinges) {
            const script::AttribPtr<bool>& attrib = hinge->*member;
            attrib->SetNative(flip ? !attrib->Get() : value);
        }
        return !hinges.empty();
    });
}

void FillColorPanel(gui::Component& body, const GroupPtr& group) {
    const std::vector<Entity*> entities = MembersOfKind<Entity>(*group, SceneOrder());
    AddColorSliders(body, AttribsOf<math::Vec4>(entities, &Entity::color), true, true);
    std::vector<gui::ComponentPtr> swatches;
    for (const math::Vec4& color : kSwatches) {
        const gui::ComponentPtr swatch(new ColorSwatch(color));
        static_cast<gui::AbstractButton&>(*swatch).GetOnClick().Add(
            util::WeakPtr<util::Pointee>(swatch.Get()),
            [group, color]() { SetColors(*group, color); });
        swatches.push_back(swatch);
    }
    body.Add(WindowStyle::Row(swatches));
    body.Add(gui::ComponentPtr(
        MakeOptionButton(entities.size() == 1 ? "PanelRandomColor" : "PanelRandomColors",
                         [group]() { RandomColors(*group); })));
}

void FillGeomPanel(gui::Component& body, const GroupPtr& group) {
    const std::vector<FiniteGeomEntity*> finite =
        MembersOfKind<FiniteGeomEntity>(*group, SceneOrder());
    const std::vector<GeomEntity*> shapes = MembersOfKind<GeomEntity>(*group, SceneOrder());
    AddSlider(body, "PanelDensity", finite, &FiniteGeomEntity::density, 0.05, 50, true);
    AddSlider(body, "PanelFriction", shapes, &GeomEntity::friction, 0, 2);
    AddSlider(body, "PanelRestitution", shapes, &GeomEntity::restitution, 0, 1);
    AddSlider(body, "PanelAirFrictionMult", finite, &FiniteGeomEntity::airFrictionMult, 0, 5);
}

void FillCollisionPanel(gui::Component& body, const GroupPtr& group) {
    const std::vector<GeomEntity*> shapes = MembersOfKind<GeomEntity>(*group, SceneOrder());
    const std::vector<BitCheckbox::WeakAttrib> sets =
        AttribsOf<int>(shapes, &GeomEntity::collideSet);
    const util::String layer = Language::Get().Translate("PanelLayer") + " ";
    std::vector<gui::ComponentPtr> row;
    for (int bit = 0; bit < kCollisionLayers; ++bit) {
        row.emplace_back(
            new BitCheckbox(layer + std::to_string(bit + 1), "PanelLayer", sets, bit, true));
        if (row.size() == kCollisionLayers / 2) {
            body.Add(WindowStyle::Row(row));
            row.clear();
        }
    }
    AddCheckbox(body, "PanelCollideWater", shapes, &GeomEntity::collideWater);
}

void FillSpringPanel(gui::Component& body, const GroupPtr& group) {
    const std::vector<SpringEntity*> springs = MembersOfKind<SpringEntity>(*group, SceneOrder());
    AddSlider(body, "PanelSpringLength", springs, &SpringEntity::length, 0.05, 20, true);
    AddSlider(body, "PanelSpringStrength", springs, &SpringEntity::strengthFactor, 0.001, 1, true);
    AddSlider(body, "PanelSpringDamping", springs, &SpringEntity::dampingFactor, 0, 1);
}

void FillHingePanel(gui::Component& body, const GroupPtr& group) {
    const std::vector<HingeEntity*> hinges = MembersOfKind<HingeEntity>(*group, SceneOrder());
    AddCheckbox(body, "PanelMotor", hinges, &HingeEntity::motor);
    AddCheckbox(body, "PanelCcw", hinges, &HingeEntity::ccw);
    AddCheckbox(body, "PanelAutoBrake", hinges, &HingeEntity::autoBrake);
    AddSlider(body, "PanelMotorSpeed", hinges, &HingeEntity::motorSpeed, 0, 20);
    AddSlider(body, "PanelMotorTorque", hinges, &HingeEntity::motorTorque, 1, 100000, true);
    body.Add(WindowStyle::Row({
        gui::ComponentPtr(MakeOptionButton(
            "PanelReverse", [group]() { SetHingeSwitch(group, &HingeEntity::ccw, true, false); })),
        gui::ComponentPtr(MakeOptionButton(
            "PanelStopMotor",
            [group]() { SetHingeSwitch(group, &HingeEntity::motor, false, false); })),
    }));
}

void FillPenPanel(gui::Component& body, const GroupPtr& group) {
    const std::vector<PenEntity*> pens = MembersOfKind<PenEntity>(*group, SceneOrder());
    AddSlider(body, "PanelPenSize", pens, &PenEntity::size, 0.01, 2, true);
    AddSlider(body, "PanelFadeTime", pens, &PenEntity::fadeTime, 0.1, 600, true);
    std::vector<Entity*> entities(pens.begin(), pens.end());
    AddColorSliders(body, AttribsOf<math::Vec4>(entities, &Entity::color), true, true);
}

void FillBackgroundPanel(gui::Component& body) {
    if (App::IsAlive() && App::Get().GetBackground()) {
        const std::vector<BackgroundSettings*> sky = {App::Get().GetBackground().Get()};
        body.Add(gui::ComponentPtr(MakeOptionHeading("PanelSky")));
        AddColorSliders(body, AttribsOf<math::Vec4>(sky, &BackgroundSettings::skyColor), false,
                        true);
        AddCheckbox(body, "PanelClouds", sky, &BackgroundSettings::drawClouds);
        AddSlider(body, "PanelCloudOpacity", sky, &BackgroundSettings::cloudOpacity, 0, 1);
    }
    const std::vector<physics::Simulation*> sim = {&physics::Simulation::Get()};
    body.Add(gui::ComponentPtr(MakeOptionHeading("PanelWorld")));
    AddTo(body, new ComponentSlider<math::Vec2>(
                    "PanelGravity", AttribsOf<math::Vec2>(sim, &physics::Simulation::gravity), 1,
                    -30, 30, true));
    AddCheckbox(body, "PanelGravitySwitch", sim, &physics::Simulation::gravitySwitch);
    AddSlider(body, "PanelAirFriction", sim, &physics::Simulation::airFrictionLinear, 0, 0.5);
    body.Add(gui::ComponentPtr(MakeOptionHeading("PanelWater")));
    AddWaterSliders(body);
}

}  // namespace

bool IsOptionPanel(const util::String& id) {
    return std::find(std::begin(kPanelIds), std::end(kPanelIds), id) != std::end(kPanelIds);
}

std::vector<util::String> PanelsFor(const Group& group) {
    const std::vector<EntityPtr>& order = SceneOrder();
    const bool shapes = !MembersOfKind<GeomEntity>(group, order).empty();
    const std::pair<const char*, bool> panels[] = {
        {kColorOptions, !group.InOrder(order).empty()},
        {kGeomOptions, shapes},
        {kCollisionOptions, shapes},
        {kSpringOptions, !MembersOfKind<SpringEntity>(group, order).empty()},
        {kHingeOptions, !MembersOfKind<HingeEntity>(group, order).empty()},
        {kPenOptions, !MembersOfKind<PenEntity>(group, order).empty()},
        {kEntityInfo, shapes},
    };
    std::vector<util::String> ids;
    for (const auto& [id, fits] : panels) {
        if (fits) {
            ids.emplace_back(id);
        }
    }
    return ids;
}

WindowPtr MakeOptionPanel(const util::String& id, const GroupPtr& given) {
    if (!IsOptionPanel(id)) {
        return WindowPtr();
    }
    const Language& language = Language::Get();
    const WindowPtr panel =
        MakePopupWindow(id, language.Translate("PopupTitle") + language.Translate(id));
    gui::Component& body = *panel->GetBody();
    // The selection as it is now: a later one is another panel's business.
    const GroupPtr group(new Group(given ? given->GetEntities() : EntitySet()));
    if (id == kColorOptions) {
        FillColorPanel(body, group);
    } else if (id == kGeomOptions) {
        FillGeomPanel(body, group);
    } else if (id == kCollisionOptions) {
        FillCollisionPanel(body, group);
    } else if (id == kSpringOptions) {
        FillSpringPanel(body, group);
    } else if (id == kHingeOptions) {
        FillHingePanel(body, group);
    } else if (id == kPenOptions) {
        FillPenPanel(body, group);
    } else if (id == kEntityInfo) {
        AddTo(body, new EntityInfoLines(MembersOfKind<GeomEntity>(*group, SceneOrder())));
    } else {
        FillBackgroundPanel(body);
    }
    return panel;
}

WindowPtr MakePopupWindow(const util::String& name, const util::String& title) {
    const WindowPtr popup(new Window(name, title, Window::Kind::Popup));
    popup->GetBody()->SetLayout(gui::LayoutPtr(new gui::ListLayout(1, WindowStyle::kSpacing)));
    return popup;
}

float WidestButton(const std::vector<gui::ButtonPtr>& buttons) {
    float widest = ButtonRow::kMinButtonWidth;
    for (const gui::ButtonPtr& button : buttons) {
        widest = std::max(widest, button->GetSize().x);
    }
    return widest;
}

gui::ComponentPtr MakeButtonGrid(const std::vector<gui::ButtonPtr>& buttons, size_t columns,
                                 float minWidth) {
    math::Vec2 cell(std::max(minWidth, WidestButton(buttons)), 0);
    for (const gui::ButtonPtr& button : buttons) {
        cell.y = std::max(cell.y, button->GetSize().y);
    }
    const gui::ComponentPtr grid(new gui::Component("ButtonGrid"));
    grid->SetLayout(gui::LayoutPtr(new gui::ListLayout(1, WindowStyle::kSpacing)));
    std::vector<gui::ComponentPtr> row;
    for (size_t i = 0; i < buttons.size(); ++i) {
        buttons[i]->SetFixedSize(cell.x, cell.y);
        row.emplace_back(buttons[i]);
        if (row.size() == columns || i + 1 == buttons.size()) {
            grid->Add(WindowStyle::Row(row));
            row.clear();
        }
    }
    return grid;
}

gui::ButtonPtr MakeMenuButton(const util::String& key, std::function<void()> action) {
    // The click's delivery holds the button, and with it this callback, while the menu goes.
    return MakeOptionButton(key, [action = std::move(action)]() {
        CloseAllPopups();
        action();
    });
}

gui::ButtonPtr MakePanelButton(const util::String& id, const GroupPtr& group, const Window& menu) {
    const Window* place = &menu;
    return MakeOptionButton(id, [id, group, place]() {
        ShowPopupAt(gui::ComponentPtr(WidgetFactory::Get().Make(id, group)),
                    place->GetScreenPosition());
    });
}

void AddColorSliders(gui::Component& body,
                     const std::vector<util::WeakPtr<script::TAttrib<math::Vec4>>>& colors,
                     bool withAlpha, bool recordsUndo) {
    if (colors.empty()) {
        return;
    }
    const char* const keys[] = {"PanelRed", "PanelGreen", "PanelBlue", "PanelOpacity"};
    for (size_t channel = 0; channel < (withAlpha ? 4u : 3u); ++channel) {
        AddTo(body,
              new ComponentSlider<math::Vec4>(keys[channel], colors, channel, 0, 1, recordsUndo));
    }
}

void AddWaterSliders(gui::Component& body) {
    const std::vector<physics::SPH*> water = {&physics::SPH::Get()};
    AddSlider(body, "PanelViscosity", water, &physics::SPH::viscosity, 0, 5);
    AddSlider(body, "PanelTension", water, &physics::SPH::surfaceTension, 0, 5);
    AddSlider(body, "PanelWaterDensity", water, &physics::SPH::density, 0.1, 10, true);
}

// BitCheckbox.

BitCheckbox::BitCheckbox(const util::String& text, const util::String& tooltipKey,
                         std::vector<WeakAttrib> attribs, int bit, bool recordsUndo)
    : gui::Checkbox(text), m_binding(std::move(attribs)), m_mask(1 << bit), m_change(recordsUndo) {
    SetTooltipFor(*this, tooltipKey);
    Refresh();
}

BitCheckbox::~BitCheckbox() = default;

void BitCheckbox::Update(float dt) {
    gui::Checkbox::Update(dt);
    Refresh();
}

void BitCheckbox::Refresh() {
    int value = 0;
    if (m_binding.ReadFirst(value)) {
        ShowChecked((value & m_mask) != 0);
    }
}

void BitCheckbox::CheckedChanged() {
    if (!m_binding.HasLive()) {
        return;
    }
    m_change.Begin();
    // Each shape keeps its other layers.
    for (const WeakAttrib& attrib : m_binding.GetAttribs()) {
        if (const util::LockPtr<script::TAttrib<int>> live(attrib); live) {
            const int value = IsChecked() ? live->Get() | m_mask : live->Get() & ~m_mask;
            gui::AttribBinding<int>({attrib}).WriteAll(value);
        }
    }
    m_change.Commit();
}

}  // namespace app
