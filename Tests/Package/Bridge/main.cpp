#include <cstdio>

extern "C" int corvantile_bridge_steps();

int main() {
    const int steps = corvantile_bridge_steps();
    std::printf("bridge: %d of 3 steps\n", steps);
    return steps == 3 ? 0 : 1;
}
