#pragma once

class Node;

// The embedded-metadata read of one node: the worker's tags into the store, the marker of the
// generic source, the GPS and IPTC status flags, the map marker, then the node's observers.
namespace ExifToolInformation {

void retrieveInformation(const Node &node);

} // namespace ExifToolInformation
