#include "results/io.hpp"

#include "frame/namelist.hpp"

namespace tsrf_module_io {

void inputdata(frame::Log& log, frame::TextInput& control, Data& data) {
  const frame::Tag tag(log, "(tsrf_module_io)(inputdata)");
  frame::Group group("TSRF_IO", {{"TIMES", data.settings.TIMES},
                                 {"REWIND_OUTFILE", data.settings.REWIND_OUTFILE}});
  group.read(log, control);
}

void refuse_result(frame::Log& log, std::string_view file, std::int64_t iter,
                   const std::string& owner, std::string_view term) {
  using frame::items;
  log.fail(items("### error : result not finite in", file), items("iter =", iter), owner,
           items("term =", term));
}

void start_file(frame::Log& log, frame::TextOutput& file, std::string_view heading,
                const Settings& settings, std::int32_t hour, FileStart& start) {
  if (!starts_over(settings, hour, start)) return;
  file.rewind(log);
  file.line(log, heading);
}

}  // namespace tsrf_module_io
