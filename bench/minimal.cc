// The reference for the start of a command: a C++ program that prints one line.
#include <iostream>

int main() {
    std::cout << "a line\n";
}
