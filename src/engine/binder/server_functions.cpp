#include "engine/binder/server_functions.hpp"

#include <algorithm>
#include <array>

#include "base/ascii.hpp"

namespace kap::engine {

namespace {

// What the server's editions know, as far as it is not in the tables of functions. In order.
constexpr std::array kServersNames = std::to_array<std::string_view>({
    "approx_count_distinct",
    "approx_percentile_cont",
    "approx_percentile_disc",
    "assemblyproperty",
    "asymkey_id",
    "asymkeyproperty",
    "base64_decode",
    "base64_encode",
    "bit_count",
    "cert_id",
    "certencoded",
    "certprivatekey",
    "certproperty",
    "compress",
    "connectionproperty",
    "containstable",
    "current_date",
    "current_request_id",
    "current_timezone",
    "current_timezone_id",
    "current_transaction_id",
    "date_bucket",
    "datetrunc",
    "decompress",
    "decryptbyasymkey",
    "decryptbycert",
    "decryptbykey",
    "decryptbykeyautoasymkey",
    "decryptbykeyautocert",
    "decryptbypassphrase",
    "edge_id_from_parts",
    "encryptbyasymkey",
    "encryptbycert",
    "encryptbykey",
    "encryptbypassphrase",
    "eventdata",
    "file_id",
    "file_idex",
    "file_name",
    "filegroup_id",
    "filegroup_name",
    "filegroupproperty",
    "fileproperty",
    "filepropertyex",
    "freetexttable",
    "fulltextcatalogproperty",
    "generate_series",
    "get_bit",
    "get_filestream_transaction_context",
    "getxmlnamespaces",
    "graph_id_from_edge_id",
    "graph_id_from_node_id",
    "greatest",
    "is_objectsigned",
    "json_array",
    "json_arrayagg",
    "json_contains",
    "json_object",
    "json_objectagg",
    "json_path_exists",
    "key_guid",
    "key_id",
    "key_name",
    "least",
    "left_shift",
    "loginproperty",
    "min_active_rowversion",
    "node_id_from_parts",
    "object_id_from_edge_id",
    "object_id_from_node_id",
    "opendatasource",
    "openquery",
    "openrowset",
    "openxml",
    "permissions",
    "publishingservername",
    "pwdcompare",
    "pwdencrypt",
    "regexp_count",
    "regexp_instr",
    "regexp_like",
    "regexp_replace",
    "regexp_substr",
    "right_shift",
    "set_bit",
    "setuser",
    "signbyasymkey",
    "signbycert",
    "stats_date",
    "string_split",
    "suser_sid",
    "symkeyproperty",
    "tertiary_weights",
    "textptr",
    "textvalid",
    "unistr",
    "verifysignedbyasymkey",
    "verifysignedbycert",
    "xml_schema_namespace",
});

static_assert(std::ranges::is_sorted(kServersNames));

}  // namespace

bool isServerFunction(std::string_view name) {
    return std::ranges::binary_search(kServersNames, std::string_view(asciiLower(name)));
}

}  // namespace kap::engine
