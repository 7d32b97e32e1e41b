#include "driver/result_files.hpp"

#include <algorithm>
#include <map>
#include <span>
#include <vector>

#include "frame/file_names.hpp"
#include "inputs/calendar.hpp"

namespace frame {

namespace {

constexpr std::int32_t kMonths = 12;

bool is_written(Form form) { return form == Form::output || form == Form::records; }

/// A file of the run. Those of one kind may be one file in several months.
struct File {
  std::string kind;  ///< as on the log
  std::string name;  ///< as the user gave it
  std::string path;
  bool written;
};

/// Gathers the files of a run.
class Files {
 public:
  Files(const UnitTable& units, std::span<const std::string> names,
        const ubx_module_filnam::Data& filnam)
      : units_(units), names_(names), filnam_(filnam) {
    add_month(filnam.MONTHS[0], true);
    add("log", "log0000", "log0000", true);
    for (const char* name : {"file_name", "EXIT"}) add(name, name, name, false);
    for (std::int32_t month = 1; filnam.dated && month <= kMonths; ++month) {
      if (month != filnam.MONTHS[0]) add_month(month, false);
    }
  }

  [[nodiscard]] const std::vector<File>& all() const { return files_; }

 private:
  void add(const std::string& kind, const std::string& name, const std::string& path,
           bool written) {
    files_.push_back({kind, name, units_.path_of(path), written});
  }

  /// The files of the table as they are named in a month; those without months only with the first.
  void add_month(std::int32_t month, bool first) {
    for (std::size_t i = 0; i < kFiles; ++i) {
      const FileRow& row = kFileTable[i];
      const auto place = std::ranges::find(filnam_.rows, row.unit, &ubx_module_filnam::Row::unit);
      const bool monthly = filnam_.dated && place != filnam_.rows.end();
      const auto index = static_cast<std::int32_t>(place - filnam_.rows.begin()) + 1;
      if (monthly && index == ubx_module_filnam::kSun) {
        add_days(i, month);
      } else if (monthly) {
        add(title(row), names_[i], make_month_name(filnam_, index, month), is_written(row.form));
      } else if (first) {
        add(title(row), names_[i], names_[i], is_written(row.form));
      }
    }
  }

  void add_days(std::size_t i, std::int32_t month) {
    const auto name_of = [&](std::int32_t day) {
      return make_day_name(filnam_, ubx_module_filnam::kSun, month, day);
    };
    const bool one_for_all = name_of(1) == name_of(2);
    const std::int32_t days = one_for_all ? 1 : tsrf_module_calendar::days_in(month);
    for (std::int32_t day = 1; day <= days; ++day) {
      add(title(kFileTable[i]), names_[i], name_of(day), false);
    }
  }

  const UnitTable& units_;
  std::span<const std::string> names_;
  const ubx_module_filnam::Data& filnam_;
  std::vector<File> files_;
};

}  // namespace

void check_outputs(Log& log, const UnitTable& units, const FileNames& names,
                   const ubx_module_filnam::Data& filnam) {
  const std::vector<File> files = Files(units, names, filnam).all();
  std::map<std::string, std::vector<const File*>> by_identity;
  std::vector<std::string> identities;
  for (const File& file : files) {
    identities.push_back(identity(file.path));
    if (!identities.back().empty()) by_identity[identities.back()].push_back(&file);
  }
  for (std::size_t n = 0; n < files.size(); ++n) {
    if (!files[n].written || identities[n].empty()) continue;
    for (const File* other : by_identity[identities[n]]) {
      if (other->kind == files[n].kind) continue;
      const std::string rule = "it must not be the name of another file : " + other->kind;
      const std::string output = items(files[n].kind, "=", files[n].name);
      attempt(log, [&] {
        if (!filnam.dated) log.data_error(output, rule);
        log.data_error(output, rule, items("file =", other->path));
      });
    }
  }
}

void check_account_name(Log& log, const UnitTable& units, const ubx_module_filnam::Data& filnam,
                        const std::string& place) {
  const std::string own = identity(units.path_of("account"));
  const Files files(units, filnam.names, filnam);
  for (const File& file : files.all()) {
    if (own.empty() || identity(file.path) != own) continue;
    attempt(log, [&] {
      log.fail(place, "### error : data error", "account (out) = account",
               "it must not be the name of another file : " + file.kind);
    });
  }
}

void report_results(Log& log, const UnitTable& units) {
  const std::vector<UnitTable::Written> written = units.written();
  for (const FileRow& row : kFileTable) {
    if (row.form != Form::output || row.unit == kUnitProgressLog) continue;
    bool none = true;
    for (const UnitTable::Written& file : written) {
      if (file.unit != row.unit) continue;
      none = false;
      const std::string head = items("%%%", title(row), "=", file.name, ":");
      if (file.rows > 0) {
        log.line(head, file.rows, "rows");
      } else {
        log.line(head,
                 file.holds_earlier ? "no rows, what it holds is of an earlier run" : "no rows");
      }
    }
    if (none) log.line("%%%", title(row), ": no rows");
  }
  for (const UnitTable::Written& file : written) {
    if (file.unit == kUnitAccount) log.line("%%% account =", file.name, ":", file.rows, "rows");
  }
}

}  // namespace frame
