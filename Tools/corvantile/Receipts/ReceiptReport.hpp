#pragma once

#include "CorvantileIAP/StoreReceipt.hpp"
#include "Tools/corvantile/ExitCode.hpp"
#include "Tools/corvantile/Receipts/PurchaseExplanation.hpp"
#include "Tools/corvantile/Receipts/RevenueSummary.hpp"

#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

namespace corvantile::tool {

// One receipt after the other, explained as text or as JSON. Borrows the stream.
class ReceiptReport {
public:
    ReceiptReport(ExplanationContext context, bool json, std::ostream& out);

    // A Refusal when the file cannot be read.
    void explain(const std::filesystem::path& file);

    // Adds the totals; `failed` if one of the files was no receipt.
    ExitCode conclude();

private:
    void show(const std::filesystem::path& file, const StoreReceipt& receipt);
    void showAsJSON(const std::filesystem::path& file, const std::vector<ExplainedPurchase>& purchases,
                    const StoreReceipt& receipt);
    void showFault(const std::filesystem::path& file, const std::string& fault);
    void showRows(const std::vector<std::string>& lines);
    void showTotals();
    void showTotalsAsJSON();

    ExplanationContext context_;
    const bool json_;
    std::ostream& out_;
    RevenueSummary summary_;
    bool hasFailed_ = false;
};

} // namespace corvantile::tool
