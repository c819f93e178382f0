// Networks that a selection disabled are enabled again when we lost the supplicant only together with the bus.
#include "unit/manager/engine_fixture.h"

namespace kaz::test {
namespace {

using namespace std::chrono_literals;

class LostSupplicant : public EngineTest {
  protected:
    LostSupplicant() {
        stack->configure("Cafe");
        stack->configure("Home");
        startWithSupplicant();
    }

    void beginAttempt() {
        engine->connectConfigured("Home");
        settle();
    }

    void loseBus() {
        supplicantGoes();
        settle();
    }

    // The calls until the next idle pass has ended.
    Calls comeBack(bool survived) {
        stack->supplicantSurvives = survived;
        takeCalls();
        supplicantComes();
        settle();
        return takeCalls();
    }

    // What the engine calls when the supplicant comes, with nothing to do for its networks.
    const Calls coming{"isSupplicantOn", "eapMethodsSync", "getAllConfiguredNetworksSync",
                       "readEnabledConfiguration"};
    const Calls comingAndEnabling{"isSupplicantOn",
                                  "supplicantSurvived",
                                  "getAllConfiguredNetworksSync",
                                  "setEnabledSync(1, true)",
                                  "setEnabledSync(2, true)",
                                  "eapMethodsSync",
                                  "getAllConfiguredNetworksSync",
                                  "readEnabledConfiguration",
                                  "saveNetworkConfigurationSync"};
};

TEST_F(LostSupplicant, ThatSurvivedAnAttemptHasAllNetworksEnabledBeforeAnythingIsSaved) {
    beginAttempt();
    loseBus();
    EXPECT_EQ(comeBack(true), comingAndEnabling);
    loseBus();
    EXPECT_EQ(comeBack(true), coming) << "once";
}

TEST_F(LostSupplicant, ThatDidNotSurviveKeepsTheNetworksOfItsFile) {
    beginAttempt();
    loseBus();
    EXPECT_EQ(comeBack(false), (Calls{"isSupplicantOn", "supplicantSurvived", "eapMethodsSync",
                                      "getAllConfiguredNetworksSync", "readEnabledConfiguration"}));
    loseBus();
    EXPECT_EQ(comeBack(true), coming) << "the attempt belonged to an earlier supplicant";
}

TEST_F(LostSupplicant, WithoutAnAttemptKeepsItsNetworks) {
    loseBus();
    EXPECT_EQ(comeBack(true), coming);
}

TEST_F(LostSupplicant, AfterAnAttemptKeepsItsNetworks) {
    beginAttempt();
    clock->advance(2s);
    settle();
    loseBus();
    EXPECT_EQ(comeBack(true), coming);
}

TEST_F(LostSupplicant, HasAllNetworksEnabledWhenAnyOfThemCouldNotBeEnabledBefore) {
    // The networks whose enabling fails at the end of the attempt.
    const std::vector<std::set<std::string>> rows{{"setEnabledSync"},
                                                  {"setEnabledSync(1, true)"},
                                                  {"setEnabledSync(2, true)"},
                                                  {"getAllConfiguredNetworksSync"}};
    for (const auto& failing : rows) {
        SCOPED_TRACE(*failing.begin());
        beginAttempt();
        stack->failing = failing;
        clock->advance(2s);
        settle();
        loseBus();
        stack->failing.clear();
        EXPECT_EQ(comeBack(true), comingAndEnabling);
    }
}

TEST_F(LostSupplicant, HasAllNetworksEnabledWhenTheReplyToTheSelectionWasLost) {
    stack->failing = {"selectSync"};
    beginAttempt();
    loseBus();
    EXPECT_EQ(comeBack(true), comingAndEnabling);
}

TEST_F(LostSupplicant, HasAllNetworksEnabledAtTheNextAttachWhenThatFailedAtThisOne) {
    beginAttempt();
    loseBus();
    stack->failing = {"setEnabledSync"};
    comeBack(true);
    stack->failing.clear();
    loseBus();
    EXPECT_EQ(comeBack(true), comingAndEnabling);
}

}  // namespace
}  // namespace kaz::test
