// fmt, compiled once: as headers alone every source would compile all of it, which took half the time of a build. It
// defines what the headers only declare: functions, and these templates, which versions 9 and 10 share.
#include <fmt/format-inl.h>

FMT_BEGIN_NAMESPACE
namespace detail {

template FMT_API void vformat_to<char>(buffer<char>&, string_view, format_args, locale_ref);
template FMT_API auto thousands_sep_impl<char>(locale_ref) -> thousands_sep_result<char>;
template FMT_API auto decimal_point_impl<char>(locale_ref) -> char;
template FMT_API auto dragonbox::to_decimal(float) noexcept -> dragonbox::decimal_fp<float>;
template FMT_API auto dragonbox::to_decimal(double) noexcept -> dragonbox::decimal_fp<double>;

}  // namespace detail
FMT_END_NAMESPACE
