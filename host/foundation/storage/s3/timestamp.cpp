#include "foundation/storage/s3/timestamp.hpp"

#include "foundation/core/text/ascii.hpp"

namespace foundation::storage::s3 {
namespace {

/// Takes a text apart from its start; once a step has failed, so do all later ones.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : rest_(text) {}

  int number(std::size_t digits) {
    int value = 0;
    for (; digits > 0; --digits) {
      if (rest_.empty() || !core::text::isDigit(rest_.front())) {
        failed_ = true;
        return 0;
      }
      value = 10 * value + (rest_.front() - '0');
      rest_.remove_prefix(1);
    }
    return value;
  }

  bool take(std::string_view expected) {
    if (!rest_.starts_with(expected)) return false;
    rest_.remove_prefix(expected.size());
    return true;
  }

  void require(std::string_view expected) { failed_ = !take(expected) || failed_; }

  /// The first three of the digits that come next, as thousandths.
  int fraction() {
    int value = 0;
    for (int unit = 100; !rest_.empty() && core::text::isDigit(rest_.front()); unit /= 10) {
      value += unit * (rest_.front() - '0');
      rest_.remove_prefix(1);
    }
    return value;
  }

  bool succeeded() const noexcept { return !failed_ && rest_.empty(); }

 private:
  std::string_view rest_;
  bool failed_ = false;
};

}  // namespace

std::optional<std::chrono::sys_time<std::chrono::milliseconds>> parseTimestamp(std::string_view text) {
  using namespace std::chrono;
  Scanner scanner(text);
  int const yearNumber = scanner.number(4);
  scanner.require("-");
  int const monthNumber = scanner.number(2);
  scanner.require("-");
  int const dayNumber = scanner.number(2);
  scanner.require("T");
  int const hour = scanner.number(2);
  scanner.require(":");
  int const minute = scanner.number(2);
  scanner.require(":");
  int const second = scanner.number(2);
  milliseconds const fraction(scanner.take(".") ? scanner.fraction() : 0);
  minutes offset(0);
  if (!scanner.take("Z") && !scanner.take("UTC")) {
    int const sign = scanner.take("-") ? -1 : 1;
    if (sign > 0) scanner.require("+");
    offset = hours(scanner.number(2));
    scanner.require(":");
    offset = sign * (offset + minutes(scanner.number(2)));
  }
  year_month_day const date{year(yearNumber), month(static_cast<unsigned>(monthNumber)),
                            day(static_cast<unsigned>(dayNumber))};
  if (!scanner.succeeded() || !date.ok() || hour > 23 || minute > 59 || second > 60) return std::nullopt;
  return sys_days(date) + hours(hour) + minutes(minute) + seconds(second) + fraction - offset;
}

}  // namespace foundation::storage::s3
