#pragma once

#include "Corvantile/Extension/DatabaseManipulating.hpp"
#include "CorvantilePlatform/Export.hpp"

#include <memory>

namespace corvantile {

class NSUserDefaults;

// The record store on user defaults.
class CORVANTILE_API UserDefaultsDatabase final : public DatabaseManipulating {
public:
    // On those of the installed platform's app.
    UserDefaultsDatabase();
    explicit UserDefaultsDatabase(std::shared_ptr<NSUserDefaults> defaults);
    ~UserDefaultsDatabase() override;

    using DatabaseManipulating::deleteAll;
    [[nodiscard]] std::optional<std::string> getData(std::string_view key,
                                                     DatabaseCryptor* with) const override;
    void deleteAll(std::string_view with) override;

private:
    void setText(const std::optional<std::string>& text, std::string_view key,
                 DatabaseCryptor* with) override;

    const std::shared_ptr<NSUserDefaults> defaults_;
};

} // namespace corvantile
