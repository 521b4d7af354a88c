#include "CorvantileIAP/IAPReceiptPluggable.hpp"

namespace corvantile {

IAPReceiptPluggable::~IAPReceiptPluggable() = default;

} // namespace corvantile
