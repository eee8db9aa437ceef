#pragma once

#include <string_view>

// The names of the SQL functions that statements call: SQLite's own, and those that
// registerFunctions(), the counters and the session provide.
namespace kap::engine::fn {

// A function by its name.
struct Function {
    std::string_view name;

    friend constexpr bool operator==(const Function&, const Function&) = default;
};

// SQLite's own.
inline constexpr Function kIfnull{"ifnull"};
inline constexpr Function kCoalesce{"coalesce"};
inline constexpr Function kLength{"length"};
inline constexpr Function kCount{"count"};
inline constexpr Function kMin{"min"};
inline constexpr Function kMax{"max"};
inline constexpr Function kSum{"sum"};
inline constexpr Function kRowNumber{"row_number"};
inline constexpr Function kRandomWhole{"random"};
inline constexpr Function kRank{"rank"};
inline constexpr Function kDenseRank{"dense_rank"};
inline constexpr Function kNtile{"ntile"};
inline constexpr Function kFirstValue{"first_value"};
inline constexpr Function kLastValue{"last_value"};
inline constexpr Function kLag{"lag"};
inline constexpr Function kLead{"lead"};
inline constexpr Function kCumeDist{"cume_dist"};
inline constexpr Function kPercentRank{"percent_rank"};

// Conversions and scales.
inline constexpr Function kConvert{"kap_convert"};
inline constexpr Function kTryConvert{"kap_try_convert"};
inline constexpr Function kStore{"kap_store"};
inline constexpr Function kScale{"kap_scale"};
inline constexpr Function kWiden{"kap_widen"};
inline constexpr Function kWide{"kap_wide"};
inline constexpr Function kDeeper{"kap_deeper"};
inline constexpr Function kTop{"kap_top"};
inline constexpr Function kOffset{"kap_offset"};
inline constexpr Function kFetch{"kap_fetch"};
inline constexpr Function kTopPercent{"kap_top_percent"};
inline constexpr Function kIsnumeric{"kap_isnumeric"};
inline constexpr Function kIsdate{"kap_isdate"};
inline constexpr Function kParse{"kap_parse"};
inline constexpr Function kTryParse{"kap_try_parse"};
inline constexpr Function kFormat{"kap_format"};

// Arithmetic.
inline constexpr Function kAdd{"kap_add"};
inline constexpr Function kSubtract{"kap_subtract"};
inline constexpr Function kAccumulate{"kap_accumulate"};
inline constexpr Function kMultiply{"kap_multiply"};
inline constexpr Function kDivide{"kap_divide"};
inline constexpr Function kModulo{"kap_modulo"};
inline constexpr Function kNegate{"kap_negate"};
inline constexpr Function kXor{"kap_xor"};
inline constexpr Function kFloatAdd{"kap_float_add"};
inline constexpr Function kFloatSubtract{"kap_float_subtract"};
inline constexpr Function kFloatAccumulate{"kap_float_accumulate"};
inline constexpr Function kFloatMultiply{"kap_float_multiply"};
inline constexpr Function kFloatDivide{"kap_float_divide"};
inline constexpr Function kDateSum{"kap_date_sum"};
inline constexpr Function kDateDifference{"kap_date_difference"};

// Aggregates.
inline constexpr Function kSumInt{"kap_sum_int"};
inline constexpr Function kSumBigint{"kap_sum_bigint"};
inline constexpr Function kSumNumeric{"kap_sum_numeric"};
inline constexpr Function kSumMoney{"kap_sum_money"};
inline constexpr Function kSumFloat{"kap_sum_float"};
inline constexpr Function kChecksumAgg{"kap_checksum_agg"};
inline constexpr Function kStdev{"kap_stdev"};
inline constexpr Function kStdevp{"kap_stdevp"};
inline constexpr Function kVar{"kap_var"};
inline constexpr Function kVarp{"kap_varp"};
inline constexpr Function kStringAgg{"kap_string_agg"};
inline constexpr Function kPercentileCont{"kap_percentile_cont"};
inline constexpr Function kPercentileDisc{"kap_percentile_disc"};
inline constexpr Function kSingle{"kap_single"};

// Rows; see row_functions.hpp.
inline constexpr Function kRowsOfQuery{"kap_rows_of"};
inline constexpr Function kRowsOfFunction{"kap_rows_by"};

// What the session answers.
inline constexpr Function kSystem{"kap_system"};
inline constexpr Function kColumnSystem{"kap_column_system"};
inline constexpr Function kCall{"kap_call"};
inline constexpr Function kColumnCall{"kap_column_call"};
inline constexpr Function kVariable{"kap_variable"};
inline constexpr Function kAssign{"kap_assign"};
inline constexpr Function kFirst{"kap_first"};
inline constexpr Function kCurrentRow{"kap_current_row"};
inline constexpr Function kCapturing{"kap_capturing"};
inline constexpr Function kNextValue{"kap_next_value"};
inline constexpr Function kFile{"kap_file"};
inline constexpr Function kOffered{"kap_offered"};
inline constexpr Function kSameValue{"kap_same_value"};
inline constexpr Function kRankedValue{"kap_ranked_value"};
inline constexpr Function kIdentity{"kap_identity"};
inline constexpr Function kIdentityGiven{"kap_identity_given"};
inline constexpr Function kRowversion{"kap_rowversion"};
inline constexpr Function kPack{"kap_pack"};
inline constexpr Function kUnpack{"kap_unpack"};
inline constexpr Function kPacked{"kap_packed"};

// Numbers.
inline constexpr Function kAbs{"kap_abs"};
inline constexpr Function kAcos{"kap_acos"};
inline constexpr Function kAsin{"kap_asin"};
inline constexpr Function kAtan{"kap_atan"};
inline constexpr Function kAtn2{"kap_atn2"};
inline constexpr Function kCeiling{"kap_ceiling"};
inline constexpr Function kCos{"kap_cos"};
inline constexpr Function kCot{"kap_cot"};
inline constexpr Function kExp{"kap_exp"};
inline constexpr Function kFloatAbs{"kap_float_abs"};
inline constexpr Function kFloatCeiling{"kap_float_ceiling"};
inline constexpr Function kFloatFloor{"kap_float_floor"};
inline constexpr Function kFloatRound{"kap_float_round"};
inline constexpr Function kFloatSign{"kap_float_sign"};
inline constexpr Function kFloor{"kap_floor"};
inline constexpr Function kLog{"kap_log"};
inline constexpr Function kLog10{"kap_log10"};
inline constexpr Function kPower{"kap_power"};
inline constexpr Function kRandom{"kap_random"};
inline constexpr Function kRound{"kap_round"};
inline constexpr Function kSign{"kap_sign"};
inline constexpr Function kSin{"kap_sin"};
inline constexpr Function kSqrt{"kap_sqrt"};
inline constexpr Function kSquare{"kap_square"};
inline constexpr Function kTan{"kap_tan"};

// Dates.
inline constexpr Function kAtTimeZone{"kap_at_time_zone"};
inline constexpr Function kDateadd{"kap_dateadd"};
inline constexpr Function kDatediff{"kap_datediff"};
inline constexpr Function kDatediffBig{"kap_datediff_big"};
inline constexpr Function kDatename{"kap_datename"};
inline constexpr Function kDatepart{"kap_datepart"};
inline constexpr Function kEomonth{"kap_eomonth"};
inline constexpr Function kFineDateadd{"kap_fine_dateadd"};
inline constexpr Function kFineDatediff{"kap_fine_datediff"};
inline constexpr Function kFineFromparts{"kap_fine_fromparts"};
inline constexpr Function kFineName{"kap_fine_name"};
inline constexpr Function kFinePart{"kap_fine_part"};
inline constexpr Function kFromparts{"kap_fromparts"};
inline constexpr Function kNow{"kap_now"};
inline constexpr Function kSwitchoffset{"kap_switchoffset"};
inline constexpr Function kSysnow{"kap_sysnow"};
inline constexpr Function kTodatetimeoffset{"kap_todatetimeoffset"};
inline constexpr Function kUtcnow{"kap_utcnow"};

// Texts, bytes and identifiers.
inline constexpr Function kAscii{"kap_ascii"};
inline constexpr Function kBinaryChecksum{"kap_binary_checksum"};
inline constexpr Function kChar{"kap_char"};
inline constexpr Function kCharindex{"kap_charindex"};
inline constexpr Function kChecksum{"kap_checksum"};
inline constexpr Function kDifference{"kap_difference"};
inline constexpr Function kFormatmessage{"kap_formatmessage"};
inline constexpr Function kHashbytes{"kap_hashbytes"};
inline constexpr Function kCompress{"kap_compress"};
inline constexpr Function kDecompress{"kap_decompress"};
inline constexpr Function kTrimLetters{"kap_trim_letters"};
inline constexpr Function kWritePart{"kap_write_part"};
inline constexpr Function kLeft{"kap_left"};
inline constexpr Function kLen{"kap_len"};
inline constexpr Function kLike{"kap_like"};
inline constexpr Function kLower{"kap_lower"};
inline constexpr Function kLtrim{"kap_ltrim"};
inline constexpr Function kNchar{"kap_nchar"};
inline constexpr Function kNewid{"kap_newid"};
inline constexpr Function kNewsequentialid{"kap_newsequentialid"};
inline constexpr Function kParsename{"kap_parsename"};
inline constexpr Function kPatindex{"kap_patindex"};
inline constexpr Function kQuotename{"kap_quotename"};
inline constexpr Function kRandomBytes{"kap_random_bytes"};
inline constexpr Function kReplace{"kap_replace"};
inline constexpr Function kReplicate{"kap_replicate"};
inline constexpr Function kReverse{"kap_reverse"};
inline constexpr Function kRight{"kap_right"};
inline constexpr Function kRtrim{"kap_rtrim"};
inline constexpr Function kSoundex{"kap_soundex"};
inline constexpr Function kSpace{"kap_space"};
inline constexpr Function kStr{"kap_str"};
inline constexpr Function kStuff{"kap_stuff"};
inline constexpr Function kSubbytes{"kap_subbytes"};
inline constexpr Function kSubstring{"kap_substring"};
inline constexpr Function kTextBytes{"kap_text_bytes"};
inline constexpr Function kVariant{"kap_variant"};
inline constexpr Function kVariantProperty{"kap_variant_property"};
inline constexpr Function kVariantBytes{"kap_variant_bytes"};
inline constexpr Function kUnicode{"kap_unicode"};
inline constexpr Function kUpper{"kap_upper"};

// XML and JSON.
inline constexpr Function kRowsAsText{"kap_rows_as_text"};
inline constexpr Function kXmlValue{"kap_xml_value"};
inline constexpr Function kIsjson{"kap_isjson"};
inline constexpr Function kJsonValue{"kap_json_value"};
inline constexpr Function kJsonQuery{"kap_json_query"};
inline constexpr Function kJsonModify{"kap_json_modify"};

// Texts that are built, and texts in an order that COLLATE says.
inline constexpr Function kConcatWs{"kap_concat_ws"};
inline constexpr Function kTranslate{"kap_translate"};
inline constexpr Function kStringEscape{"kap_string_escape"};
inline constexpr Function kLikeAs{"kap_like_as"};
inline constexpr Function kPatindexAs{"kap_patindex_as"};
inline constexpr Function kCharindexAs{"kap_charindex_as"};
inline constexpr Function kReplaceAs{"kap_replace_as"};

}  // namespace kap::engine::fn
