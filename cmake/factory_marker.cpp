// Tells the host that the object file was made by us: a section of 38 bytes in the file.
namespace {

[[gnu::used, gnu::section("KV7OBJECTPROPERTIES")]] const char marker[38] = {
    '{', '\r', '\n', ' ', ' ', '"', 'k', 'v',  '7',  'f', 'a',  'c', 't',
    'o', 'r',  'y',  'e', 'x', 't', 'e', 'r',  'n',  'a', 'l',  '"', ' ',
    ':', ' ',  '"',  'y', 'e', 's', '"', '\r', '\n', '}', '\r', '\n'};

}  // namespace
