#include <cstdio>
#include <cstdlib>
#include <string_view>

void BeginWork();

int main(int /*count*/, char** arguments) {
    BeginWork();
    std::puts("end of main");
    std::fflush(stdout);
    if (std::string_view(arguments[1]) == "exit") {
        std::exit(3);
    }
    return 3;
}
