// Exits with 0 if the configuration has the key that is its argument.
#include <kaz/util/kaz_config.h>

int main(int argc, char** argv) {
    return argc == 2 && kaz::util::readKazConfig().count(argv[1]) == 1 ? 0 : 1;
}
