#include "util/Singleton.h"

#include <gtest/gtest.h>

namespace {

class Service : public util::Pointee, public util::Singleton<Service> {
public:
    // Reaches for its own singleton while being built: must get itself, not recurse.
    Service() : m_selfDuringConstruction(&Service::Get()) {}
    Service* m_selfDuringConstruction;
};

class Phoenix : public util::Pointee, public util::Singleton<Phoenix> {};

class FailingService : public util::Pointee, public util::Singleton<FailingService> {
public:
    FailingService() { throw std::runtime_error("cannot start"); }
};

class Twice : public util::Pointee, public util::Singleton<Twice> {};

}  // namespace

TEST(Singleton, CreatedAtFirstUseAndVisibleWhileBuilt) {
    EXPECT_FALSE(Service::IsAlive());
    Service& service = Service::Get();
    EXPECT_TRUE(Service::IsAlive());
    EXPECT_EQ(service.m_selfDuringConstruction, &service);
    EXPECT_EQ(&Service::Get(), &service);
}

TEST(Singleton, ReleasedSingletonIsAPhoenixAndNeverComesBack) {
    Phoenix::Get();
    Phoenix::Release();
    EXPECT_FALSE(Phoenix::IsAlive());
    try {
        Phoenix::Get();
        FAIL() << "phoenix rebuilt";
    } catch (const BadCoderException& e) {
        EXPECT_NE(std::string(e.what()).find("Phoenix singleton detected: "), std::string::npos);
        EXPECT_NE(std::string(e.what()).find("Phoenix"), std::string::npos);
    }
    EXPECT_FALSE(Phoenix::IsAlive());
}

TEST(Singleton, FailedConstructionLeavesNoInstance) {
    EXPECT_THROW(FailingService::Create(), std::runtime_error);
    EXPECT_FALSE(FailingService::IsAlive());
    EXPECT_THROW(FailingService::Create(), BadCoderException);
}

TEST(Singleton, SecondConstructionFailsTheCodeAssertion) {
    Twice::Get();
    try {
        Twice* second = new Twice();
        (void)second;
        FAIL() << "second instance built";
    } catch (const BadCoderException& e) {
        EXPECT_NE(std::string(e.what()).find("\"!s_instance\""), std::string::npos);
    }
    EXPECT_TRUE(Twice::IsAlive());
}
