#pragma once

#include "MetadataSource.h"
#include "platform/Operation.h"

#include <memory>

class Node;
using NodePtr = std::shared_ptr<Node>;

// The five background reads, one class per kind of source. Each has a synchronous
// retrieveInformation, shared by the queued read, the node's synchronous getters and
// invalidation.
// One background read of one source for one node; main() skips it when the marker is set.
class RetrievalOperation : public Operation
{
public:
    RetrievalOperation(NodePtr node, MetadataSource markerSource, MetadataSource readSource);
    void main() override;

    const NodePtr node;

private:
    const MetadataSource m_markerSource;
    const MetadataSource m_readSource;
};

class GetBasicInformationOperation final : public RetrievalOperation
{
public:
    explicit GetBasicInformationOperation(NodePtr node);
    static void retrieveInformation(const Node &node);
};

// Tests the search index's marker, not its own: a queued embedded read is skipped only when the
// search index has been read for the file.
class GetExifToolInformationOperation final : public RetrievalOperation
{
public:
    explicit GetExifToolInformationOperation(NodePtr node);
    static void retrieveInformation(const Node &node);
};

class GetImageIOInformationOperation final : public RetrievalOperation
{
public:
    explicit GetImageIOInformationOperation(NodePtr node);
    static void retrieveInformation(const Node &node);
};

class GetAVKitInformationOperation final : public RetrievalOperation
{
public:
    explicit GetAVKitInformationOperation(NodePtr node);
    static void retrieveInformation(const Node &node);
};

class GetSpotlightInformationOperation final : public RetrievalOperation
{
public:
    explicit GetSpotlightInformationOperation(NodePtr node);
    static void retrieveInformation(const Node &node);
};

// The re-read of a file after DataCoordinator::invalidateData: each source that the
// invalidation chose, once, then the file's release for the next write.
class RereadOperation final : public Operation
{
public:
    explicit RereadOperation(NodePtr node);
    void main() override;

    const NodePtr node;
};
