#pragma once

#include "Operation.h"
#include "QualityOfService.h"

#include <QList>
#include <QString>

#include <memory>

// A named queue of operations run by up to maxConcurrentOperationCount worker threads. Higher
// queue priorities start before waiting lower ones; equal priorities start in the order added.
class OperationQueue
{
public:
    OperationQueue(QString name, int maxConcurrentOperationCount,
                   QualityOfService qualityOfService = QualityOfService::Default);
    ~OperationQueue();

    OperationQueue(const OperationQueue &) = delete;
    OperationQueue &operator=(const OperationQueue &) = delete;

    const QString &name() const { return m_name; }
    QualityOfService qualityOfService() const { return m_qualityOfService; }
    int maxConcurrentOperationCount() const;
    void setMaxConcurrentOperationCount(int count);

    void addOperation(OperationPtr operation);
    void addOperation(std::function<void()> block);
    // Adds the operations in order, as many addOperation calls would, under one lock.
    void addOperations(const QList<OperationPtr> &operations);
    void cancelAllOperations();

    // Running operations first (in start order), then waiting ones in the order they will start.
    QList<OperationPtr> operations() const;
    int operationCount() const;
    void waitUntilAllOperationsAreFinished();

private:
    struct Impl;
    const QString m_name;
    const QualityOfService m_qualityOfService;
    // Shared with the worker threads, so the queue may be dropped from one of its operations.
    std::shared_ptr<Impl> d;
};
