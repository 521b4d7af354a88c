#include "Tests/CorvantilePlay/ToolRun.hpp"

#include <nlohmann/json.hpp>

#include <map>
#include <regex>
#include <sstream>

// What the tool prints as JSON is what its page promises to scripts.
namespace corvantile::tool::JSONFormatTest {

using JSON = nlohmann::json;
using Types = std::map<std::string, std::string>;

std::vector<std::string> parts(const std::string& text, const std::regex& pattern) {
    std::vector<std::string> found;
    for (std::sregex_iterator at(text.begin(), text.end(), pattern), end; at != end; ++at)
        found.push_back((*at)[1]);
    return found;
}

// The rows of the page's table: "| `price`, `currency` | decimal, text | yes | … |".
Types documentedTypes() {
    Types types;
    std::ifstream page(CORVANTILE_TOOL_PAGE);
    bool isInTable = false;
    for (std::string line; std::getline(page, line);) {
        isInTable = line.starts_with("| field | type | stable |") || (isInTable && line.starts_with("|"));
        if (!isInTable || !line.starts_with("| `")) continue;
        const auto columns = parts(line, std::regex(R"(\| ([^|]*) (?=\|))"));
        const auto names = parts(columns[0], std::regex("`([^`]+)`"));
        const auto kinds = parts(columns[1], std::regex("([^,]+)(?:, |$)"));
        EXPECT_EQ(names.size(), kinds.size()) << line;
        for (std::size_t i = 0; i < names.size(); ++i)
            EXPECT_TRUE(types.emplace(names[i], kinds[i]).second) << line;
    }
    return types;
}

bool isText(const JSON& value, const char* pattern = "[^]*") {
    return value.is_string() && std::regex_match(value.get<std::string>(), std::regex(pattern));
}

bool isListOf(const JSON& value, bool (*isMember)(const JSON&)) {
    return value.is_array() && std::all_of(value.begin(), value.end(), isMember);
}

bool isOf(const std::string& type, const JSON& value) {
    if (type == "any") return true;
    if (type == "text") return isText(value);
    if (type == "date") return isText(value, R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ)");
    if (type == "decimal") return isText(value, R"(-?\d+(\.\d+)?)");
    if (type == "number") return value.is_number();
    if (type == "boolean") return value.is_boolean();
    if (type == "object") return value.is_object();
    if (type == "list of texts")
        return isListOf(value, [](const JSON& member) { return member.is_string(); });
    if (type == "list of objects")
        return isListOf(value, [](const JSON& member) { return member.is_object(); });
    return false;
}

void expectDocumented(const JSON& object, const Types& types) {
    for (const auto& [name, value] : object.items()) {
        const auto type = types.find(name);
        if (type == types.end()) {
            ADD_FAILURE() << "the page has no field \"" << name << "\": " << object;
            continue;
        }
        EXPECT_TRUE(isOf(type->second, value)) << name << " is no " << type->second << ": " << object;
        if (type->second == "list of objects")
            for (const auto& member : value) expectDocumented(member, types);
    }
}

constexpr const char* sampleReceipt = R"({"status": 0, "latest_receipt_info": [
    {"transaction_id": "11", "original_transaction_id": "11", "product_id": "com.example.sampleapp.pro.monthly",
     "purchase_date": "2023-12-30 00:00:00 Etc/GMT", "expires_date": "2024-01-06 00:00:00 Etc/GMT"},
    {"transaction_id": "12", "original_transaction_id": "12", "product_id": "gone",
     "purchase_date": "2023-12-30 00:00:00 Etc/GMT"},
    {"transaction_id": "soon"}]})";

TEST(JSONFormat, IsWhatThePageSaysInEverySubcommand) {
    const auto types = documentedTypes();
    ASSERT_GT(types.size(), 50U);
    const ToolRun run;
    const SampleFolder folder;
    const std::string sample = CORVANTILE_SAMPLE_APP;
    const auto state = " --state '" + folder.state().string() + "'";
    for (const auto& [arguments, exitCode] : std::vector<std::pair<std::string, int>>{
             {"play --script '" + sample + "/tour.play'" + state,
              0}, // what comes next looks at what it leaves
             {"play --server" + state, 1},
             {"records" + state, 0},
             {"keychain --reveal" + state, 0},
             {"outbox" + state, 0},
             {"doctor" + state, 0},
             {"receipts '" + folder.write("receipt.json", sampleReceipt).string() + "' --app '" + sample +
                  "'" + state,
              0},
             {"receipts '" + folder.write("none.json", "{}").string() + "' --app '" + sample + "'", 1},
             {"catalogue '" + sample + "/Catalogue.storekit'", 0}}) {
        SCOPED_TRACE(arguments);
        const auto outcome =
            run(arguments + " --json",
                R"(launch\nactivate\nstatus\nstore\ntransactions\ncatalogue\nlookup AnalyticPluggable\n)"
                R"(network\noutbox\nserver\ndelete\nreinstall\nhelp\nregister\n)");
        EXPECT_EQ(outcome.exitCode, exitCode) << outcome.errors;
        std::istringstream lines(outcome.output);
        std::string line;
        std::getline(lines, line);
        EXPECT_EQ(line, R"({"kind":"format","format":"corvantile","version":1})");
        while (std::getline(lines, line)) {
            const auto object = JSON::parse(line);
            EXPECT_TRUE(object.contains("kind")) << line;
            expectDocumented(object, types);
        }
    }
}

} // namespace corvantile::tool::JSONFormatTest
