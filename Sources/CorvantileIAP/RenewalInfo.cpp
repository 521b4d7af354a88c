#include "CorvantileIAP/RenewalInfo.hpp"

#include "CorvantilePlatform/Foundation/Console.hpp"

namespace corvantile {

std::string describe(const RenewalInfo& record) {
    const auto& grace = record.gracePeriodExpiresDate;
    return "RenewalInfo(productID: " + debugText(record.productID) +
           ", gracePeriodExpiresDate: " + (grace ? describe(*grace) : "nil") + ")";
}

} // namespace corvantile
