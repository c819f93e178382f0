// A supplicant that survives the loss of the bus gets the networks enabled that a selection disabled.
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
        runUntilIdle();
    }

    void loseBus() {
        detachSupplicant();
        runUntilIdle();
    }

    // Attaches the supplicant, runs until idle, and returns the calls.
    Calls comeBack(bool survived) {
        stack->supplicantSurvives = survived;
        takeCalls();
        attachSupplicant();
        runUntilIdle();
        return takeCalls();
    }

    // The calls of an attach without networks to enable, and with them.
    const Calls coming{"isSupplicantOn", "eapMethodsSync", listing, "readEnabledConfiguration"};
    const Calls comingAndEnabling{"isSupplicantOn",
                                  "supplicantSurvived",
                                  listing,
                                  "setEnabledSync(1, true)",
                                  "setEnabledSync(2, true)",
                                  "eapMethodsSync",
                                  listing,
                                  "readEnabledConfiguration",
                                  saving};
};

TEST_F(LostSupplicant, SurvivorOfAnAttemptGetsAllNetworksEnabledBeforeTheSave) {
    beginAttempt();
    loseBus();
    EXPECT_EQ(comeBack(true), comingAndEnabling);
    loseBus();
    EXPECT_EQ(comeBack(true), coming) << "once";
}

TEST_F(LostSupplicant, NewSupplicantKeepsTheNetworksOfItsFile) {
    beginAttempt();
    loseBus();
    EXPECT_EQ(comeBack(false), (Calls{"isSupplicantOn", "supplicantSurvived", "eapMethodsSync", listing,
                                      "readEnabledConfiguration"}));
    loseBus();
    EXPECT_EQ(comeBack(true), coming) << "the attempt belonged to an earlier supplicant";
}

TEST_F(LostSupplicant, SurvivorWithoutAnAttemptKeepsItsNetworks) {
    loseBus();
    EXPECT_EQ(comeBack(true), coming);
}

TEST_F(LostSupplicant, SurvivorAfterACompleteEnablingKeepsItsNetworks) {
    beginAttempt();
    clock->advance(2s);
    runUntilIdle();
    loseBus();
    EXPECT_EQ(comeBack(true), coming);
}

TEST_F(LostSupplicant, SurvivorOfAFailedEnablingGetsAllNetworksEnabled) {
    // What fails when the attempt ends.
    const std::vector<std::set<std::string>> rows{{"setEnabledSync"},
                                                  {"setEnabledSync(1, true)"},
                                                  {"setEnabledSync(2, true)"},
                                                  {"getAllConfiguredNetworksSync"}};
    for (const auto& failing : rows) {
        SCOPED_TRACE(*failing.begin());
        beginAttempt();
        stack->failing = failing;
        clock->advance(2s);
        runUntilIdle();
        loseBus();
        stack->failing.clear();
        EXPECT_EQ(comeBack(true), comingAndEnabling);
    }
}

TEST_F(LostSupplicant, SurvivorOfASelectionWithoutReplyGetsAllNetworksEnabled) {
    stack->failing = {"selectSync"};
    beginAttempt();
    loseBus();
    EXPECT_EQ(comeBack(true), comingAndEnabling);
}

TEST_F(LostSupplicant, FailedEnablingOfASurvivorIsRetriedAtTheNextLoss) {
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
