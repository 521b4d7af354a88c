#include "CorvantilePlay/detail/Receipts/AppSinks.hpp"

#include "Corvantile/Plugin/Analytic/AdjustAnalyticComponent.hpp"
#include "CorvantilePlay/detail/Output/Consoles.hpp"

namespace corvantile::tool {

AppSinks::AppSinks(const AppDescription& app)
    : silence_([](const PlayEvent&) {}),
      platform_({.bundleIdentifier = app.bundleIdentifier,
                 .stateFolder = folder_.path() / "state",
                 .resourceFolder = app.folder,
                 .console = std::make_shared<SilentConsole>()}) {
    for (const auto& description : app.sinks)
        sinks_.push_back({description, description.make(description.settings, silence_)});
}

AppSinks::~AppSinks() = default;

std::vector<SinkAnswer> AppSinks::answersTo(const std::string& event) const {
    auto answers = answersToSubscriptions();
    for (std::size_t index = 0; index < answers.size(); ++index) {
        const auto& sink = sinks_[index].sink;
        answers[index].isAccepted = sink->shouldTrack(AnalyticEvent(event));
        const auto adjust = std::dynamic_pointer_cast<AdjustAnalyticComponent>(sink);
        if (!adjust) continue;
        const auto found = adjust->events().find(event);
        answers[index].token = found == adjust->events().end() ? "" : found->second;
    }
    return answers;
}

std::vector<SinkAnswer> AppSinks::answersToSubscriptions() const {
    std::vector<SinkAnswer> answers;
    for (const auto& [description, sink] : sinks_)
        answers.push_back(
            {.sink = description.settings.name, .registersAtLaunch = description.registersAtLaunch});
    return answers;
}

std::string describe(const SinkAnswer& answer) {
    auto text = answer.sink;
    if (!answer.isAccepted)
        text += " ignores it";
    else if (answer.token)
        text += answer.token->empty() ? " has no token for it" : " with token " + *answer.token;
    return answer.registersAtLaunch ? text : text + " (once a command registers it)";
}

EventValue::Map fieldsOf(const SinkAnswer& answer) {
    EventValue::Map fields{{"sink", answer.sink},
                           {"accepts", answer.isAccepted},
                           {"register", answer.registersAtLaunch ? "launch" : "command"}};
    if (answer.token) fields.emplace("hasToken", !answer.token->empty());
    if (answer.token && !answer.token->empty()) fields.emplace("token", *answer.token);
    return fields;
}

} // namespace corvantile::tool
