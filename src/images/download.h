// Linked pattern images.
#pragma once

#include <string_view>

#include "platform/http_client.h"

// Fetches the URL over http or https and writes the body to the open file. False when the URL cannot be read or
// reached, or the body is not as long as the server said; a status outside 200 to 299 is a success without a body.
bool DownloadToFile(int file, std::u16string_view url, const HttpLimits& limits = {});
