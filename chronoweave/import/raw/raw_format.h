// Raw event files as a format: streams of records and log images, by the extension "trr".
#pragma once

#include <memory>
#include <string>

#include "chronoweave/import/source/byte_source.h"
#include "chronoweave/import/source/source.h"

extern const SourceFormat raw_Format;

// A raw source on bytes that need not be a file's. name stands in messages. Refused when the header is none,
// or not there whole yet.
Result raw_Open(std::unique_ptr<ByteSource> bytes, const std::string& name,
                std::unique_ptr<EventSource>& source);
