#include "program.hpp"

int main(int argc, char** argv) {
    return tools::run_program(argc, argv);
}
