#include "CorvantilePlatform/Foundation/NSError.hpp"

#include <utility>

namespace corvantile {

namespace {

std::string descriptionFor(const std::string& domain, int code,
                           const std::map<std::string, std::string>& userInfo) {
    if (const auto found = userInfo.find(NSError::localizedDescriptionKey); found != userInfo.end())
        return found->second;
    return "The operation couldn’t be completed. (" + domain + " error " + std::to_string(code) + ".)";
}

std::string userInfoText(const std::map<std::string, std::string>& userInfo) {
    std::string text;
    for (const auto& [key, value] : userInfo) text.append(text.empty() ? "" : ", ").append(key + "=" + value);
    return text;
}

} // namespace

NSError::NSError(std::string domain, int code, std::map<std::string, std::string> userInfo)
    : domain_(std::move(domain)),
      code_(code),
      userInfo_(std::move(userInfo)),
      localizedDescription_(descriptionFor(domain_, code_, userInfo_)) {}

NSError::NSError(const NSError&) = default;
NSError::~NSError() = default;

std::string describe(const NSError& error) {
    const auto& info = error.userInfo();
    const auto found = info.find(NSError::localizedDescriptionKey);
    std::string text = "Error Domain=" + error.domain() + " Code=" + std::to_string(error.code()) + " \"" +
                       (found == info.end() ? std::string("(null)") : found->second) + "\"";
    if (!info.empty()) text += " UserInfo={" + userInfoText(info) + "}";
    return text;
}

std::string describe(const std::exception_ptr& error) {
    if (!error) return "nil";
    try {
        std::rethrow_exception(error);
    } catch (const NSError& known) {
        return describe(known);
    } catch (const std::exception& other) {
        return other.what();
    } catch (...) {
        return "unknown error";
    }
}

std::string localizedDescription(const std::exception_ptr& error) {
    if (!error) return {};
    try {
        std::rethrow_exception(error);
    } catch (const std::exception& known) {
        return known.what();
    } catch (...) {
        return "unknown error";
    }
}

} // namespace corvantile
