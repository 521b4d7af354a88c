#include "CorvantilePlatform/Process.hpp"

#include "Tests/CorvantilePlatform/AtOnce.hpp"
#include "Tests/CorvantileTest/Matchers.hpp"

#include <set>

namespace corvantile::ProcessTest {

std::vector<std::string> journal;

template <char name>
struct Journaled {
    ~Journaled() { journal.push_back(std::string("destroyed ") + name); }
    void release() { journal.push_back(std::string("released ") + name); }
};

struct Counter {
    int value = 0;
};

// While it lets go, somebody may still ask for a record that was never needed before.
struct Late {
    Process* process = nullptr;
    void release() { static_cast<void>(process->record<Journaled<'z'>>()); }
};

TEST(Process, ReleasesFirstMadeFirstAlsoWhatIsMadeMeanwhileAndDestroysLastMadeFirst) {
    {
        Process process;
        static_cast<void>(process.record<Journaled<'a'>>());
        static_cast<void>(process.record<Counter>()); // has nothing to release
        process.record<Late>().process = &process;
        static_cast<void>(process.record<Journaled<'b'>>());
        process.record<Counter>().value = 7;
        EXPECT_EQ(process.record<Counter>().value, 7);
        EXPECT_EQ(Process().record<Counter>().value, 0);

        process.release();
    }
    EXPECT_EQ(journal, (std::vector<std::string>{"released a", "released b", "released z", "destroyed z",
                                                 "destroyed b", "destroyed a"}));
}

struct MadeOnce {
    static inline std::atomic<int> made{0};
    MadeOnce() {
        ++made;
        std::this_thread::yield();
    }
};

TEST(Process, MakesARecordOnceForManyThreads) {
    Process process;
    std::vector<void*> records(8);

    atOnce(8, [&](int number) { records[static_cast<std::size_t>(number)] = &process.record<MadeOnce>(); });

    EXPECT_EQ(MadeOnce::made, 1);
    EXPECT_EQ(std::set<void*>(records.begin(), records.end()).size(), 1u);
}

} // namespace corvantile::ProcessTest
