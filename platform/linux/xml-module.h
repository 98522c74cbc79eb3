// What the XML module exports. Handles are the module's; a node is valid while its document is open.

#pragma once

extern "C" {

// The document at `path`, or null when it is missing or not well-formed.
__attribute__((visibility("default"))) void* watch_xml_open(const char* path);
__attribute__((visibility("default"))) void watch_xml_close(void* document);

// A node, or null. `name` null: any element.
__attribute__((visibility("default"))) const void* watch_xml_root(void* document);
__attribute__((visibility("default"))) const void* watch_xml_first_child(const void* node, const char* name);
__attribute__((visibility("default"))) const void* watch_xml_next_sibling(const void* node, const char* name);

// Texts belong to the document.
__attribute__((visibility("default"))) const char* watch_xml_name(const void* node);
__attribute__((visibility("default"))) const char* watch_xml_attribute(const void* node, const char* name);

}  // extern "C"
