#include "Corvantile/Plugin/Database/UserPreference.hpp"

#include "Corvantile/Extension/DatabaseManipulating.hpp"
#include "Corvantile/Plugin/Database/detail/StorageKey.hpp"
#include "CorvantilePlatform/Application/UIDevice.hpp"
#include "CorvantilePlatform/FatalError.hpp"
#include "CorvantilePlatform/Foundation/Console.hpp"
#include "CorvantilePlatform/Foundation/DispatchQueue.hpp"
#include "CorvantilePlatform/Foundation/NSError.hpp"
#include "CorvantilePlatform/Foundation/NSUserDefaults.hpp"
#include "CorvantilePlatform/Foundation/detail/UUID.hpp"
#include "CorvantilePlatform/Platform.hpp"
#include "CorvantilePlatform/Security/SecureRandom.hpp"

#include <array>
#include <exception>
#include <utility>

namespace corvantile {

namespace {

constexpr std::string_view identifierKey = "uuidKey";

std::string randomIdentifier() {
    std::array<unsigned char, 16> bytes{};
    Platform::current().ports().random->copyBytes(bytes.data(), bytes.size());
    return uuidText(bytes);
}

} // namespace

UserPreferenceProtocol::~UserPreferenceProtocol() = default;

UserPreference::UserPreference(std::shared_ptr<DatabaseManipulating> manipulator)
    : manipulator_(std::move(manipulator)) {}

UserPreference::UserPreference() { unimplementedInitializer("UserPreference"); }

UserPreference::~UserPreference() = default;

// The plain key is read, the prefixed one written: an identifier that the host put under the plain key
// counts, ours is found anew at every launch.
bool UserPreference::didFinishLaunchingWithOptions(UIApplication&, const LaunchOptions&) {
    auto given = NSUserDefaults::standardUserDefaults()->stringForKey(identifierKey);
    loadDatabaseLater(given && !given->empty() ? std::move(*given) : newIdentifier());
    return true;
}

std::string UserPreference::newIdentifier() {
    auto vendor = UIDevice::current()->identifierForVendor();
    const auto identifier = vendor ? std::move(*vendor) : randomIdentifier();
    try {
        manipulator_->setObject(identifier, identifierKey, this);
    } catch (...) {
        // A host's own store may throw anything. The identifier is found again, or made, at the next launch.
    }
    return identifier;
}

void UserPreference::loadDatabaseLater(std::string userID) {
    DispatchQueue::main()->asyncAfter(loadDelay, [weak = weak_from_this(), userID = std::move(userID)] {
        if (const auto self = weak.lock()) self->loadDatabase(userID);
    });
}

void UserPreference::loadDatabase(const std::string& userID) {
    userID_ = userID;
    isLoadedSubject_.onNext(true);
}

void UserPreference::asyncOpen(Block block) {
    DispatchQueue::main()->async([weak = weak_from_this(), block = std::move(block)] {
        const auto self = weak.lock();
        if (!self || !self->userID_) return;
        const auto userID = *self->userID_; // the block may invalidate
        try {
            block(*self->manipulator_, userID);
        } catch (...) {
            Platform::current().ports().console->print(localizedDescription(std::current_exception()));
        }
    });
}

void UserPreference::deleteAll() {
    asyncOpen([](DatabaseManipulating& store, const std::string&) { store.deleteAll(); });
}

StorageKey& UserPreference::storageKey() {
    if (!storageKey_) storageKey_ = std::make_unique<StorageKey>();
    return *storageKey_;
}

std::optional<std::string> UserPreference::encrypt(std::string_view text) {
    return storageKey().encrypt(text);
}

std::optional<std::string> UserPreference::decrypt(std::string_view text) {
    return storageKey().decrypt(text);
}

} // namespace corvantile
