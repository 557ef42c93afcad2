#include "script/ValueConversions.h"

#include <gtest/gtest.h>

#include <limits>

#include "TreeBuilders.h"
#include "util/Exception.h"

namespace {

using namespace trees;

ObjectPtr L(ObjectList elements) {
    return ObjectPtr(new List(std::move(elements)));
}
ObjectPtr I(int value) {
    return ValueToObject(value);
}
ObjectPtr D(double value) {
    return ValueToObject(value);
}
ObjectPtr S(const char* value) {
    return ValueToObject(value);
}
ObjectPtr B(bool value) {
    return ValueToObject(value);
}

TEST(ObjectToValueTest, ScalarsAreStrict) {
    EXPECT_EQ(ObjectToValue<bool>(B(true)), true);
    EXPECT_EQ(ThrownBy([] { ObjectToValue<bool>(I(1)); }), "Not a bool");
    EXPECT_EQ(ObjectToValue<int>(I(-7)), -7);
    EXPECT_EQ(ThrownBy([] { ObjectToValue<int>(D(2.0)); }), "Not an integer");
    EXPECT_EQ(ThrownBy([] { ObjectToValue<int>(B(true)); }), "Not an integer");
    EXPECT_EQ(ThrownBy([] { ObjectToValue<int>(S("1")); }), "Not an integer");
    EXPECT_EQ(ObjectToValue<unsigned int>(I(-1)), std::numeric_limits<unsigned int>::max());
    EXPECT_EQ(ThrownBy([] { ObjectToValue<unsigned int>(D(1)); }), "Not an integer");
    EXPECT_EQ(ObjectToValue<util::String>(S("text")), "text");
    EXPECT_EQ(ThrownBy([] { ObjectToValue<util::String>(I(1)); }), "Not a string");
    EXPECT_EQ(ThrownBy([] { ObjectToValue<int>(nullptr); }), "Not an integer");
}

TEST(ObjectToValueTest, FloatsTakeIntsAndDoublesPassThroughSinglePrecision) {
    EXPECT_EQ(ObjectToValue<long double>(I(2)), 2.0L);
    EXPECT_EQ(ObjectToValue<long double>(D(0.1)), static_cast<long double>(0.1));
    EXPECT_EQ(ObjectToValue<float>(I(3)), 3.0f);
    EXPECT_EQ(ObjectToValue<float>(D(0.1)), 0.1f);
    // Deliberate: a double read from a script carries about seven digits.
    EXPECT_EQ(ObjectToValue<double>(D(0.1)), static_cast<double>(0.1f));
    EXPECT_NE(ObjectToValue<double>(D(0.1)), 0.1);
    EXPECT_EQ(ObjectToValue<double>(D(std::numeric_limits<double>::infinity())),
              std::numeric_limits<double>::infinity());
    EXPECT_EQ(ThrownBy([] { ObjectToValue<long double>(S("1.0")); }), "Not a float");
    EXPECT_EQ(ThrownBy([] { ObjectToValue<double>(B(false)); }), "Not a float");
    EXPECT_EQ(ThrownBy([] { ObjectToValue<float>(L({})); }), "Not a float");
}

TEST(ObjectToValueTest, Lists) {
    const ObjectPtr element = I(1);
    const ObjectList elements = ObjectToValue<ObjectList>(L({element, S("a")}));
    ASSERT_EQ(elements.size(), 2u);
    EXPECT_EQ(elements[0], element);
    EXPECT_EQ(ThrownBy([] { ObjectToValue<ObjectList>(I(1)); }), "Not a list");
}

TEST(ObjectToValueTest, Vectors) {
    EXPECT_EQ(ObjectToValue<math::Vec2>(L({I(1), D(2.5)})), math::Vec2(1.0f, 2.5f));
    EXPECT_EQ(ThrownBy([] { ObjectToValue<math::Vec2>(L({I(1), I(2), I(3)})); }), "Not a vector");
    EXPECT_EQ(ThrownBy([] { ObjectToValue<math::Vec2>(L({I(1)})); }), "Not a vector");
    EXPECT_EQ(ThrownBy([] { ObjectToValue<math::Vec2>(I(1)); }), "Not a vector");
    EXPECT_EQ(ThrownBy([] { ObjectToValue<math::Vec2>(L({I(1), S("2")})); }), "Not a float");
    EXPECT_EQ(ObjectToValue<math::Vec2i>(L({I(-1), I(2)})), math::Vec2i(-1, 2));
    EXPECT_EQ(ThrownBy([] { ObjectToValue<math::Vec2i>(L({D(1), I(2)})); }), "Not an integer");
    EXPECT_EQ(ObjectToValue<math::Vec3>(L({I(1), I(2), D(3.5)})), math::Vec3(1, 2, 3.5f));
    EXPECT_EQ(ThrownBy([] { ObjectToValue<math::Vec3>(L({I(1), I(2)})); }), "Not a vector");
    EXPECT_EQ(ObjectToValue<math::Vec4>(L({I(1), I(2), I(3), D(0.5)})), math::Vec4(1, 2, 3, 0.5f));
    EXPECT_EQ(ThrownBy([] { ObjectToValue<math::Vec4>(L({I(1), I(2), I(3)})); }), "Not a vector");
    math::Vec2 out;
    ObjectToVec(out, L({D(-1), I(4)}));
    EXPECT_EQ(out, math::Vec2(-1, 4));
}

TEST(ObjectToValueTest, PointListsAndBoxes) {
    const std::vector<math::Vec2> points =
        ObjectToValue<std::vector<math::Vec2>>(L({L({I(1), I(2)}), L({D(3.5), I(4)})}));
    ASSERT_EQ(points.size(), 2u);
    EXPECT_EQ(points[1], math::Vec2(3.5f, 4));
    EXPECT_TRUE(ObjectToValue<std::vector<math::Vec2>>(L({})).empty());
    EXPECT_EQ(ThrownBy([] { ObjectToValue<std::vector<math::Vec2>>(I(1)); }), "Not a list");
    EXPECT_EQ(ThrownBy([] { ObjectToValue<std::vector<math::Vec2>>(L({I(1)})); }), "Not a vector");

    // Position and size; a negative size spans the other way.
    const math::BoundingBox2f box =
        ObjectToValue<math::BoundingBox2f>(L({L({I(1), I(2)}), L({I(3), I(-4)})}));
    EXPECT_EQ(box.min, math::Vec2(1, -2));
    EXPECT_EQ(box.max, math::Vec2(4, 2));
    EXPECT_EQ(ThrownBy([] {
                  ObjectToValue<math::BoundingBox2f>(L({L({I(1), I(2)})}));
              }),
              "Not a bounding box");
    EXPECT_EQ(ThrownBy([] { ObjectToValue<math::BoundingBox2f>(I(1)); }), "Not a bounding box");
}

TEST(ObjectToValueTest, Functions) {
    const ObjectPtr function(new Function({}, Stmts({}), nullptr));
    EXPECT_EQ(ObjectToValue<FunctionPtr>(function), function);
    const util::String message = ThrownBy([] { ObjectToValue<FunctionPtr>(L({})); });
    EXPECT_NE(message.find("\"ret\""), util::String::npos) << message;
    EXPECT_THROW(ObjectToValue<FunctionPtr>(ObjectPtr(new IntrinsicCmd([] { return I(1); }))),
                 BadCoderException);
}

TEST(ValueToObjectTest, ScalarsBecomeTheFourValueTypes) {
    EXPECT_EQ(ValueOf<util::String>(ValueToObject(util::String("s"))), "s");
    EXPECT_EQ(ValueOf<util::String>(ValueToObject("c")), "c");
    EXPECT_EQ(ValueOf<int>(ValueToObject(5)), 5);
    EXPECT_EQ(ValueOf<int>(ValueToObject(4294967295u)), -1);
    EXPECT_EQ(ValueOf<double>(ValueToObject(0.1f)), static_cast<double>(0.1f));
    EXPECT_EQ(ValueOf<double>(ValueToObject(0.25)), 0.25);
    EXPECT_EQ(ValueOf<double>(ValueToObject(1.5L)), 1.5);
    EXPECT_EQ(ValueOf<bool>(ValueToObject(false)), false);
    // Each call makes a new object.
    EXPECT_NE(ValueToObject(1), ValueToObject(1));
}

TEST(ValueToObjectTest, VectorsPairsAndBoxesBecomeLists) {
    EXPECT_EQ(ValueToObject(math::Vec2(1, 2.5f))->ToExpression()->ToCode(), "[1.0, 2.5]");
    EXPECT_EQ(ValueToObject(math::Vec2i(1, -2))->ToExpression()->ToCode(), "[1, -2]");
    EXPECT_EQ(ValueToObject(math::Vec3(1, 2, 3))->ToString(), "[1, 2, 3]");
    EXPECT_EQ(ValueToObject(math::Vec4(1, 2, 3, 4))->ToExpression()->ToCode(),
              "[1.0, 2.0, 3.0, 4.0]");
    const ObjectPtr a = I(1);
    const ObjectPtr b = S("b");
    const ObjectPtr pair = ValueToObject(std::make_pair(a, b));
    EXPECT_EQ(ObjectToValue<ObjectList>(pair), (ObjectList{a, b}));
    const math::BoundingBox2f box(math::Vec2(-1, 2), math::Vec2(3, 5));
    EXPECT_EQ(ValueToObject(box)->ToExpression()->ToCode(), "[[-1.0, 2.0], [4.0, 3.0]]");
    // Both directions agree.
    EXPECT_EQ(ObjectToValue<math::BoundingBox2f>(ValueToObject(box)), box);
    EXPECT_EQ(ObjectToValue<math::Vec3>(ValueToObject(math::Vec3(0.5f, -1, 7))),
              math::Vec3(0.5f, -1, 7));
}

}  // namespace
