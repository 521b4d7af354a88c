#pragma once

#include "CorvantilePlatform/Export.hpp"

#include <exception>
#include <map>
#include <string>

namespace corvantile {

// The framework's one exception type: a domain, a code within it, and texts for people. Immutable once made,
// since streams share it between threads as std::exception_ptr.
class CORVANTILE_API NSError : public std::exception {
public:
    // The user-info key of the text for people.
    static constexpr const char* localizedDescriptionKey = "NSLocalizedDescription";

    NSError(std::string domain, int code, std::map<std::string, std::string> userInfo = {});
    NSError(const NSError&);
    NSError& operator=(const NSError&) = delete;
    ~NSError() override;

    [[nodiscard]] const std::string& domain() const { return domain_; }
    [[nodiscard]] int code() const { return code_; }
    [[nodiscard]] const std::map<std::string, std::string>& userInfo() const { return userInfo_; }

    // The user info's text, or a sentence made of domain and code.
    [[nodiscard]] const std::string& localizedDescription() const { return localizedDescription_; }
    [[nodiscard]] const char* what() const noexcept override { return localizedDescription_.c_str(); }

private:
    std::string domain_;
    int code_;
    std::map<std::string, std::string> userInfo_;
    std::string localizedDescription_;
};

// `Error Domain=DOMAIN Code=N "TEXT" UserInfo={NSLocalizedDescription=TEXT}`.
[[nodiscard]] CORVANTILE_API std::string describe(const NSError& error);

// The same for whatever the pointer holds; an exception that is no NSError shows its what().
[[nodiscard]] CORVANTILE_API std::string describe(const std::exception_ptr& error);

// The text for people of whatever the pointer holds.
[[nodiscard]] CORVANTILE_API std::string localizedDescription(const std::exception_ptr& error);

} // namespace corvantile
