#include "CorvantileDesktop/DesktopPlatform.hpp"
#include "CorvantileDesktop/detail/Files/Descriptor.hpp"
#include "CorvantilePlatform/Foundation/Console.hpp"
#include "Tests/CorvantilePlatform/AtOnce.hpp"
#include "Tests/CorvantileTest/Matchers.hpp"

#include <csignal>

#include <fcntl.h>
#include <pthread.h>

namespace corvantile::DescriptorConsoleTest {

struct Pipe {
    Pipe() {
        int ends[2];
        EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
        out = Descriptor(ends[0]);
        in = Descriptor(ends[1]);
    }
    // Everything until the writing end is closed.
    [[nodiscard]] std::string readAll() const {
        std::string all;
        char buffer[512];
        for (ssize_t count = 0; (count = ::read(out.value(), buffer, sizeof buffer)) > 0;)
            all.append(buffer, static_cast<std::size_t>(count));
        return all;
    }
    Descriptor out, in;
};

TEST(DescriptorConsole, KeepsLinesOfSeveralThreadsWholeOnAFullPipe) {
    Pipe pipe;
    ::fcntl(pipe.in.value(), F_SETPIPE_SZ, 4096);
    ::fcntl(pipe.in.value(), F_SETFL, O_NONBLOCK); // the console must wait on its own
    DesktopPlatform platform({.consoleDescriptor = pipe.in.value()});
    auto& console = *platform.ports().console;
    std::string all;

    std::thread reader([&] { all = pipe.readAll(); });
    atOnce(3, [&console](int number) {
        for (int i = 0; i < 20; ++i) console.print(std::string(6000, static_cast<char>('a' + number)));
    });
    pipe.in = Descriptor();
    reader.join();

    ASSERT_EQ(all.size(), 3U * 20 * 6001);
    for (std::size_t line = 0; line < all.size(); line += 6001) {
        ASSERT_EQ(all.find_first_not_of(all[line], line), line + 6000);
        ASSERT_EQ(all[line + 6000], '\n');
    }
}

TEST(DescriptorConsole, IsSilentWhenItsReaderHasGone) {
    Pipe pipe;
    pipe.out = Descriptor();

    for (const int descriptor : {pipe.in.value(), -1}) {
        DesktopPlatform platform({.consoleDescriptor = descriptor});
        platform.ports().console->print("nobody reads this");
    }

    sigset_t blocked;
    ASSERT_EQ(pthread_sigmask(SIG_SETMASK, nullptr, &blocked), 0);
    EXPECT_EQ(sigismember(&blocked, SIGPIPE), 0);
}

} // namespace corvantile::DescriptorConsoleTest
