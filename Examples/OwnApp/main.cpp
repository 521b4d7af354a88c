// A tool of the app's own: everything that `corvantile` does, with a plug-in, a sink and a record that the
// framework does not know.
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlay/PlayMain.hpp"
#include "CorvantileReactive/DisposeBag.hpp"
#include "DiarySink.hpp"
#include "Streak.hpp"

#include <memory>
#include <string>
#include <utility>

namespace {

namespace cv = corvantile;
using cv::PlayRegistry;
using ownapp::Streak;

PlayRegistry::MakePlugIn readStreakPlugin(const cv::PlayConfiguration& configuration) {
    configuration.allow({"goal"});
    const auto goal = configuration.unsignedInteger("goal");
    if (goal == 0) configuration.fail("goal", "expected a number from 1 on");
    return [goal](const auto&) { return std::make_shared<ownapp::StreakPlugin>(goal); };
}

void followStreakPlugin(const PlayRegistry::PlugIn& plugIn, cv::PlayReporter& reporter,
                        cv::rx::DisposeBag& bag) {
    const auto streak = std::dynamic_pointer_cast<ownapp::StreakPluggable>(plugIn)->streak();
    bag.insert(streak.subscribe([&reporter](const Streak& record) {
        reporter.report("streak", "streak", "this is launch " + std::to_string(record.launches),
                        {{"launches", record.launches}});
    }));
}

PlayRegistry::MakeSink readDiarySink(const cv::PlayConfiguration& configuration) {
    configuration.allow({"bullet"});
    return [bullet = configuration.text("bullet", "*")](const auto& settings, auto& reporter) {
        return std::make_shared<ownapp::DiarySink>(bullet, settings, reporter);
    };
}

bool isStreak(std::string_view json) {
    try {
        return cv::decodeJSON<Streak>(json).launches > 0;
    } catch (const cv::NSError&) {
        return false;
    }
}

} // namespace

int main(int argc, char** argv) {
    auto registry = PlayRegistry::framework();
    registry.addPlugIn({.name = "StreakPlugin",
                        .offers = {PlayRegistry::service<ownapp::StreakPluggable>()},
                        .needs = {cv::UserPreferenceProtocol::typeName, cv::AnalyticPluggable::typeName},
                        .read = readStreakPlugin,
                        .follow = followStreakPlugin});
    registry.addSink({"DiarySink", readDiarySink});
    registry.addRecord({std::string(Streak::typeName), isStreak});
    return cv::playMain(argc, argv, std::move(registry));
}
