#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "doctor/finding.h"
#include "inspection/facts.h"

namespace kaz::doctor {

inline constexpr const char* supplicantUnit = "wpa_supplicant.service";
inline constexpr const char* restartUnit = "systemctl restart wpa_supplicant.service";

// The findings so far.
class Examination {
  public:
    explicit Examination(const inspection::Facts& facts) : facts_(facts) {}

    const inspection::Facts& facts() const { return facts_; }

    void broken(Link link, std::string what, std::string remedy = {});
    void doubtful(Link link, std::string what, std::string remedy = {}, std::vector<std::string> ssids = {});
    void notLookedAt(Link link, std::string why);
    // Does nothing if the link has a finding already.
    void ok(Link link, std::string what);

    bool isBroken(Link link) const;
    bool isAnyBroken(std::initializer_list<Link> links) const;

    std::vector<Finding> take();

    // The interface that the library should use: the one that the unit names. Empty if there is none.

    std::string interface() const;
    const inspection::Link* link() const;

  private:
    bool has(Link link) const;

    const inspection::Facts& facts_;
    std::vector<Finding> findings_;
};

// The rules, in the order in which they must be applied.
void examineBus(Examination& examination);
void examineChoice(Examination& examination);
void examineRadio(Examination& examination);
void examineUnit(Examination& examination);
void examineConfiguration(Examination& examination);
void examineRivals(Examination& examination);
void examineSupplicant(Examination& examination);
void examineNetworks(Examination& examination);
void examineAddresses(Examination& examination);
void examineSurroundings(Examination& examination);

// A text as one word of a shell.
std::string word(const std::string& text);

// A shell line that writes these lines into a new file of a folder.
std::string writing(const std::string& folder, const std::string& file,
                    const std::vector<std::string>& lines);

// A shell line that writes these lines into a drop-in of the supplicant's unit, and restarts it.
std::string dropIn(const std::string& file, const std::vector<std::string>& lines);

// The options of a supplicant's command line: each letter with its value.
std::vector<std::pair<char, std::string>> optionsIn(const std::vector<std::string>& command);
std::vector<std::string> interfacesIn(const std::vector<std::string>& command);

}  // namespace kaz::doctor
