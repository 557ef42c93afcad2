#include "script/Attributes.h"

#include <gtest/gtest.h>

#include "../util/LogCapture.h"
#include "TreeBuilders.h"
#include "script/Reflected.h"

namespace {

using namespace trees;

// A reflected object with one attribute of each kind, as a class of the program would
// register them, counting the change callbacks.
class Body : public Reflected {
public:
    Body() : Reflected("Body") {
        AddAttrib(density, "density", 1);
        AddAttrib(size, "size", math::Vec2(1, 2));
        AddAttrib(count, "count", 3);
        AddAttrib(title, "title", "box");
        AddAttrib(visible, "visible", std::function<bool()>([this] { return m_visible; }),
                  std::function<void(const bool&)>([this](const bool& v) {
                      ++setterCalls;
                      m_visible = v;
                  }),
                  true);
        AddAttrib(scale, "scale", &Body::GetScale, &Body::SetScale, 0.5f);
        AddAttrib(window, "window", &windowSize);
    }

    float GetScale() const { return m_scale; }
    void SetScale(const float& scale) { m_scale = scale; }

    AttribPtr<float> density;
    AttribPtr<math::Vec2> size;
    AttribPtr<int> count;
    AttribPtr<util::String> title;
    AttribGetSetPtr<bool> visible;
    AttribGetSetPtr<float> scale;
    AttribRemotePokerPtr<math::Vec2i> window;

    math::Vec2i windowSize{640, 480};
    int setterCalls = 0;
    bool m_visible = false;
    float m_scale = 0;
};

class AttributesTest : public RootTest {
protected:
    AttributesTest() { root->AddReflected(body); }

    // Counts the change callbacks of an attribute.
    template <class T>
    int* Watch(TAttrib<T>& attribute) {
        int* calls = &m_calls[m_watched++];
        attribute.GetOnChange().Add(body, [calls] { ++*calls; });
        return calls;
    }

    // body.<name> = <expression>, as a script would write it.
    ObjectPtr Set(const util::String& name, ExpressionPtr value) {
        return Eval(Assign(Id(Id("Body"), name), value));
    }

    util::SharedPtr<Body> body{new Body()};
    int m_calls[8] = {};
    int m_watched = 0;
};

TEST_F(AttributesTest, RegistrationHoldsTheDefaultOnBothSides) {
    EXPECT_EQ(body->density->Get(), 1.0f);
    EXPECT_EQ(ValueOf<double>(body->GetValue("density")), 1.0);
    EXPECT_EQ(body->size->Get(), math::Vec2(1, 2));
    EXPECT_EQ(body->GetValue("size")->ToExpression()->ToCode(), "[1.0, 2.0]");
    EXPECT_EQ(ValueOf<int>(body->GetValue("count")), 3);
    EXPECT_EQ(body->title->Get(), "box");
    EXPECT_EQ(ValueOf<util::String>(body->GetValue("title")), "box");
    // The setter receives the default at registration.
    EXPECT_EQ(body->setterCalls, 1);
    EXPECT_TRUE(body->m_visible);
    EXPECT_EQ(body->m_scale, 0.5f);
    EXPECT_EQ(body->window->Get(), math::Vec2i(640, 480));
    EXPECT_EQ(body->GetValue("window")->ToExpression()->ToCode(), "[640, 480]");

    EXPECT_EQ(body->GetVariable("density"), body->density);
    EXPECT_FALSE(body->density->IsConstant());
    EXPECT_EQ(body->density->GetOwner().Get(), body.Get());
    EXPECT_TRUE(body->density->IsDefault());
    EXPECT_TRUE(body->window->IsDefault());
    EXPECT_EQ(body->density->GetDefault(), 1.0f);
    // Attributes are saved with their paths.
    EXPECT_EQ(body->density->ToExpression()->ToCode(), "Body.density = 1.0");
}

TEST_F(AttributesTest, CallbacksFireOnlyOnChange) {
    int* calls = Watch(*body->density);
    Set("density", Dbl(1.0));
    Set("density", Int(1));
    EXPECT_EQ(*calls, 0);
    Set("density", Dbl(2.5));
    EXPECT_EQ(*calls, 1);
    EXPECT_EQ(body->density->Get(), 2.5f);
    EXPECT_FALSE(body->density->IsDefault());
    Set("density", Dbl(2.5));
    AbstractAttrib::CalcAll();
    EXPECT_EQ(*calls, 1);
    // Exact equality, no tolerance.
    Set("density", Dbl(2.5000002));
    EXPECT_EQ(*calls, 2);
    body->density->SetNative(1);
    EXPECT_TRUE(body->density->IsDefault());
    EXPECT_EQ(*calls, 3);
}

TEST_F(AttributesTest, WrongTypesFailTheAssignmentAndStay) {
    int* calls = Watch(*body->density);
    EXPECT_EQ(ThrownBy([&] { Set("density", Str("heavy")); }), "Not a float");
    // The wrong value stays on the script side, so the next pass fails again.
    EXPECT_EQ(ValueOf<util::String>(body->GetValue("density")), "heavy");
    {
        // The pass reports the broken attribute and goes on with the others.
        test::LogCapture log;
        EXPECT_EQ(ThrownBy([] { AbstractAttrib::CalcAll(); }), "no exception");
        EXPECT_TRUE(log.Contains("-- Warning: Failed to update density: Not a float"));
    }
    EXPECT_EQ(body->density->Get(), 1.0f);
    EXPECT_EQ(*calls, 0);
    EXPECT_EQ(ThrownBy([&] { Set("size", Blk({Int(1), Int(2), Int(3)})); }), "Not a vector");
    EXPECT_EQ(ThrownBy([&] { Set("count", Dbl(1.0)); }), "Not an integer");
    // A function with arguments is not called; it is no number either.
    EXPECT_EQ(ThrownBy([&] { Set("density", Fn({"x"}, {Id("x")})); }), "Not a float");
    // Put right, the pass works again.
    Set("density", Int(4));
    Set("size", Lst({Int(3), Dbl(4.5)}));
    Set("count", Int(7));
    AbstractAttrib::CalcAll();
    EXPECT_EQ(body->density->Get(), 4.0f);
    EXPECT_EQ(body->size->Get(), math::Vec2(3, 4.5f));
    EXPECT_EQ(body->count->Get(), 7);
    EXPECT_EQ(*calls, 1);
}

TEST_F(AttributesTest, FormulasAreRecalculatedByCalcAll) {
    int* calls = Watch(*body->density);
    Eval(Assign(Id("source"), Int(2)));
    // Body.density = { source }: runs at the assignment, then each pass.
    Set("density", Fn({}, {Id("source")}));
    EXPECT_EQ(body->density->Get(), 2.0f);
    EXPECT_EQ(*calls, 1);
    EXPECT_TRUE(Is<Function>(body->GetValue("density")));
    EXPECT_EQ(ValueOf<int>(body->density->GetLastResult()), 2);
    AbstractAttrib::CalcAll();
    EXPECT_EQ(*calls, 1);
    Eval(Assign(Id("source"), Int(5)));
    EXPECT_EQ(body->density->Get(), 2.0f);
    AbstractAttrib::CalcAll();
    EXPECT_EQ(body->density->Get(), 5.0f);
    EXPECT_EQ(*calls, 2);
    // A script reading the attribute runs the formula again.
    EXPECT_EQ(ValueOf<int>(Eval(Id(Id("Body"), "density"))), 5);
}

TEST_F(AttributesTest, NativeWritesReplaceFormulas) {
    Eval(Assign(Id("source"), Int(2)));
    Set("density", Fn({}, {Id("source")}));
    body->density->SetNative(7);
    EXPECT_EQ(ValueOf<double>(body->GetValue("density")), 7.0);
    Eval(Assign(Id("source"), Int(3)));
    AbstractAttrib::CalcAll();
    EXPECT_EQ(body->density->Get(), 7.0f);
    body->size->SetNative(math::Vec2(-1, 0.25f));
    EXPECT_EQ(body->GetValue("size")->ToExpression()->ToCode(), "[-1.0, 0.25]");
    body->title->SetNative("sphere");
    EXPECT_EQ(ValueOf<util::String>(body->GetValue("title")), "sphere");
}

TEST_F(AttributesTest, SetAloneIsUndoneByTheNextCalc) {
    int* calls = Watch(*body->count);
    body->count->Set(9);
    EXPECT_EQ(body->count->Get(), 9);
    EXPECT_EQ(*calls, 1);
    body->count->Calc();
    EXPECT_EQ(body->count->Get(), 3);
    EXPECT_EQ(*calls, 2);
}

// Repeated passes over values that stand still must still notice every way the two sides
// can part: a native write behind the script's back, a native side living outside, a new
// value object, and a formula that must run each time.
TEST_F(AttributesTest, RepeatedPassesStillCatchEveryChange) {
    int* calls = Watch(*body->count);
    AbstractAttrib::CalcAll();
    AbstractAttrib::CalcAll();
    body->count->Set(9);
    AbstractAttrib::CalcAll();
    EXPECT_EQ(body->count->Get(), 3);
    EXPECT_EQ(*calls, 2);
    body->count->Set(9);
    AbstractAttrib::CalcAll();
    EXPECT_EQ(body->count->Get(), 3);

    Set("visible", Bool(false));
    AbstractAttrib::CalcAll();
    body->m_visible = true;
    AbstractAttrib::CalcAll();
    EXPECT_FALSE(body->m_visible);

    // The same number written again is a new object standing for the same value.
    Set("count", Int(4));
    AbstractAttrib::CalcAll();
    body->count->Set(1);
    Set("count", Int(4));
    EXPECT_EQ(body->count->Get(), 4);

    int runs = 0;
    body->density->SetValue(ObjectPtr(new IntrinsicCmd([&runs] { return ValueToObject(++runs); })));
    AbstractAttrib::CalcAll();
    AbstractAttrib::CalcAll();
    EXPECT_EQ(runs, 3);
    EXPECT_EQ(body->density->Get(), 3.0f);
}

TEST_F(AttributesTest, GetterAndSetterAttributes) {
    int* calls = Watch(*body->visible);
    Set("visible", Bool(true));
    EXPECT_EQ(body->setterCalls, 1);
    EXPECT_EQ(*calls, 0);
    Set("visible", Bool(false));
    EXPECT_EQ(body->setterCalls, 2);
    EXPECT_FALSE(body->m_visible);
    EXPECT_EQ(*calls, 1);
    EXPECT_FALSE(body->visible->IsDefault());
    // The native side is read through the getter.
    body->m_visible = true;
    EXPECT_TRUE(body->visible->Get());
    EXPECT_TRUE(body->visible->IsDefault());
    EXPECT_EQ(ThrownBy([&] { Set("visible", Int(1)); }), "Not a bool");

    Set("scale", Int(2));
    EXPECT_EQ(body->m_scale, 2.0f);
    EXPECT_EQ(body->scale->Get(), 2.0f);
}

TEST_F(AttributesTest, RemotePokerMirrorsOutsideChangesWithoutCallbacks) {
    int* calls = Watch(*body->window);
    body->windowSize = math::Vec2i(800, 600);
    EXPECT_EQ(body->GetValue("window")->ToExpression()->ToCode(), "[640, 480]");
    AbstractAttrib::CalcAll();
    EXPECT_EQ(body->GetValue("window")->ToExpression()->ToCode(), "[800, 600]");
    EXPECT_EQ(*calls, 0);
    EXPECT_FALSE(body->window->IsDefault());
    // A script write reaches the remote variable and fires.
    Set("window", Lst({Int(1024), Int(768)}));
    EXPECT_EQ(body->windowSize, math::Vec2i(1024, 768));
    EXPECT_EQ(*calls, 1);
    AbstractAttrib::CalcAll();
    EXPECT_EQ(body->windowSize, math::Vec2i(1024, 768));
    EXPECT_EQ(*calls, 1);
}

TEST_F(AttributesTest, ADestroyedAttributeIsSkippedByThePass) {
    // Whichever order the pass takes, the callback that drops the other attribute must
    // not leave a dangling entry behind.
    AttribPtr<int> victim(new Attrib<int>("victim", 0));
    AttribPtr<int> killer(new Attrib<int>("killer", 0));
    killer->GetOnChange().Add(body, [&victim] { victim.Reset(); });
    victim->GetOnChange().Add(body, [&killer] { killer.Reset(); });
    killer->Variable::SetValue(ValueToObject(1));
    victim->Variable::SetValue(ValueToObject(1));
    AbstractAttrib::CalcAll();
    EXPECT_TRUE(!victim || !killer);
}

}  // namespace
