#include "CorvantilePlatform/Network/HTTPClient.hpp"

#include "CorvantilePlatform/Platform.hpp"

namespace corvantile {

HTTPClient::~HTTPClient() = default;

std::shared_ptr<HTTPClient> HTTPClient::shared() { return Platform::current().ports().http; }

} // namespace corvantile
