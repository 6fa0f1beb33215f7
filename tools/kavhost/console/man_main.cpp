// Writes the manual page of kavhost.
//     kavhost_man FILE

#include "tools/kavhost/console/options.h"

#include <exception>
#include <fstream>
#include <iostream>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: kavhost_man FILE\n";
        return 2;
    }
    try {
        std::ofstream file(argv[1], std::ios::binary);
        file << KAV::Host::ManPage();
        file.close();
        if (file) return 0;
        std::cerr << "kavhost_man: cannot write " << argv[1] << '\n';
    } catch (const std::exception& error) {
        std::cerr << "kavhost_man: " << error.what() << '\n';
    }
    return 1;
}
