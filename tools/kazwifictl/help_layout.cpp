#include "kazwifictl/help_layout.h"

#include <fmt/format.h>

namespace kaz::ctl {

std::string HelpLayout::make_help(const CLI::App* command, std::string name, CLI::AppFormatMode mode) const {
    std::string positionals;
    for (const CLI::Option* option : command->get_options()) {
        if (option->get_positional()) {
            positionals += ' ' + make_option_usage(option);
        }
    }
    const std::string examples = command->get_footer();
    return fmt::format("{}\nUsage: {} [OPTIONS]{}\n{}{}{}", command->get_description(), name, positionals,
                       make_positionals(command), make_groups(command, mode),
                       examples.empty() ? "" : '\n' + examples + '\n');
}

std::string HelpLayout::make_option(const CLI::Option* option, bool isPositional) const {
    const std::string names = "  " + make_option_name(option, isPositional) + make_option_opts(option);
    return fmt::format("{:<{}}{}\n", names, get_column_width(), make_option_desc(option));
}

}  // namespace kaz::ctl
