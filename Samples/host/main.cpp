// The smallest host: names the engine that it runs on.
#include <ZvCore/Version.h>

#include <cstdio>

int main() {
    std::printf("Zelvan %s\n", ZvCore::Version::Text());
    return 0;
}
