#include "IPTCLocationComponent.h"

#include "metadata/MetadataStorage.h"
#include "metadata/MultiNodeCombinedValuesRequest.h"
#include "platform/MainQueue.h"
#include "session/DataModel.h"
#include "writing/ChangeManager.h"

#include <QCoreApplication>
#include <QSet>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

QString localized(const char *text, const char *comment)
{
    return QCoreApplication::translate("IPTCLocationComponent", text, comment);
}

bool sameSelection(const QList<NodePtr> &a, const QList<NodePtr> &b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const NodePtr &x, const NodePtr &y) { return x == y || *x == *y; });
}

} // namespace

IPTCLocationComponent::IPTCLocationComponent(DataModel &model, QString label,
                                             QString exifToolsValueKey,
                                             QString exifToolsProposedValueKey,
                                             const QString &sampleValue)
    : _currentValueInInterface(std::make_shared<StraightReadWriteVariable<QString>>(sampleValue))
    , _currentValueOnDisk(std::make_shared<StraightReadWriteVariable<QString>>(sampleValue))
    , _proposedValue(std::make_shared<StraightReadWriteVariable<QString>>(sampleValue))
    , _placeHolderText(std::make_shared<StraightReadWriteVariable<QString>>(u"nothing selected"_s))
    , label(std::move(label))
    , exifToolsValueKey(std::move(exifToolsValueKey))
    , exifToolsProposedValueKey(std::move(exifToolsProposedValueKey))
    , stateRevision(std::make_shared<StraightVariable<int>>(0))
    , m_model(model)
    , m_self(std::make_shared<IPTCLocationComponent *>(this))
{
    m_field.text = sampleValue;
    m_field.placeholder = _placeHolderText->value();
}

IPTCLocationComponent::~IPTCLocationComponent() = default;

void IPTCLocationComponent::configureListeners()
{
    _currentValueInInterface->addColdListener([this](const QString &value) {
        // Only a different text is set, so typing is not disturbed.
        if (m_field.text != value)
            m_field.text = value;
        configureApplyButton();
        changeTextColor();
    });
    _currentValueOnDisk->addColdListener([this](const QString &) { changeTextColor(); });
    m_model._selectedNodes->addHotListener(
        [this](const QList<NodePtr> &selection) { selectionDidChange(selection); });
}

void IPTCLocationComponent::selectionDidChange(const QList<NodePtr> &selection)
{
    const bool selectionChanged
        = !previousSelection || !sameSelection(*previousSelection, selection);
    previousSelection = selection;

    const bool usable = !selection.isEmpty();
    m_field.editable = m_field.selectable = m_comboEnabled = usable;
    m_applyEnabled = usable && _currentValueInInterface->value() != _currentValueOnDisk->value();
    m_borderColor = usable ? ColorRole::BorderBlue : ColorRole::SystemGray;
    stateChanged();

    const std::weak_ptr<IPTCLocationComponent *> self = m_self;
    currentValuesRequest = MultiNodeCombinedValuesRequest::create(
        selection, exifToolsValueKey, MetadataSource::ExifToolGeneric, [self, selectionChanged] {
            const auto alive = self.lock();
            if (!alive)
                return;
            IPTCLocationComponent *component = *alive;
            component->proposedValuesRequest = MultiNodeCombinedValuesRequest::create(
                component->m_model.selectedNodes(), component->exifToolsProposedValueKey,
                MetadataSource::ExifToolGeneric, [self, selectionChanged] {
                    MainQueue::postAfter(10, [self, selectionChanged] {
                        if (const auto alive = self.lock())
                            (*alive)->triggerInterfaceUpdate(selectionChanged);
                    });
                });
        });
}

void IPTCLocationComponent::triggerInterfaceUpdate(bool updateInterfaceValue)
{
    if (!currentValuesRequest || !proposedValuesRequest)
        return;
    const CombinedValuesWrapper current
        = currentValuesRequest->combinedDisplayStringWrapper(exifToolsValueKey);
    const CombinedValuesWrapper proposed
        = proposedValuesRequest->combinedDisplayStringWrapper(exifToolsProposedValueKey);

    m_menu.clear();
    _proposedValue->setValue(QString());
    m_field.placeholder.clear();

    const QString proposedHeader = localized("Proposed Values:", "combo box section header title");
    switch (proposed.kind) {
    case CombinedValuesWrapper::Kind::SingleValue:
        m_field.placeholder = proposed.singleValue();
        m_menu.append({MenuEntry::Kind::SectionHeader, proposedHeader});
        m_menu.append({MenuEntry::Kind::Item, proposed.singleValue()});
        addAllProposedValuesIfAnyAndDifferentFromPlaceholder();
        break;
    case CombinedValuesWrapper::Kind::MultipleValues:
        m_menu.append({MenuEntry::Kind::SectionHeader, proposedHeader});
        for (const QString &value : proposed.values)
            m_menu.append({MenuEntry::Kind::Item, value});
        addAllProposedValuesIfAnyAndDifferentFromPlaceholder();
        break;
    case CombinedValuesWrapper::Kind::NoValue:
        addAllProposedValuesIfAnyAndDifferentFromPlaceholder();
        break;
    case CombinedValuesWrapper::Kind::Waiting:
        break;
    }

    const auto setPlaceholderIfEmpty = [this](const QString &text) {
        if (m_field.placeholder.isEmpty())
            m_field.placeholder = text;
    };
    switch (current.kind) {
    case CombinedValuesWrapper::Kind::SingleValue:
        if (!current.someValuesMissing) {
            _currentValueOnDisk->setValue(current.singleValue());
            if (updateInterfaceValue)
                _currentValueInInterface->setValue(current.singleValue());
        }
        // With some files blank, the field keeps the previous selection's text.
        addAllCurrentValuesIfAnyAndDifferentFromOwnValue();
        break;
    case CombinedValuesWrapper::Kind::MultipleValues:
        // The long text stands when no file is blank; kept as the program has always shown it.
        setPlaceholderIfEmpty(current.someValuesMissing
                                  ? localized("Multiple Values", "combo box placeholder text")
                                  : localized("Multiple Values (including blank fields)",
                                              "combo box placeholder text"));
        addAllCurrentValuesIfAnyAndDifferentFromOwnValue();
        break;
    case CombinedValuesWrapper::Kind::NoValue:
        setPlaceholderIfEmpty(localized("<none>", "combo box content"));
        addAllCurrentValuesIfAnyAndDifferentFromOwnValue();
        _currentValueOnDisk->setValue(QString());
        if (updateInterfaceValue)
            _currentValueInInterface->setValue(QString());
        break;
    case CombinedValuesWrapper::Kind::Waiting:
        setPlaceholderIfEmpty(localized("waiting...", "combo box content"));
        _currentValueOnDisk->setValue(QString());
        if (updateInterfaceValue)
            _currentValueInInterface->setValue(QString());
        break;
    }
    configureApplyButton();
    stateChanged();
}

void IPTCLocationComponent::addSection(const QString &header, const QString &key,
                                       const std::function<bool(const QString &)> &keep)
{
    // All items of the list, not only the selected ones.
    const QStringList all
        = MetadataStorage::shared().getAllCurrentStringValues(key, MetadataSource::ExifToolGeneric);
    // A set: the store holds one value for every item of the list, many of them alike.
    QSet<QString> seen;
    QStringList kept;
    for (const QString &value : all) {
        if (!seen.contains(value) && keep(value))
            kept.append(value);
        seen.insert(value);
    }
    if (kept.isEmpty())
        return;
    std::sort(kept.begin(), kept.end());
    m_menu.append({MenuEntry::Kind::SectionHeader, header});
    for (const QString &value : std::as_const(kept))
        m_menu.append({MenuEntry::Kind::Item, value});
}

void IPTCLocationComponent::addAllProposedValuesIfAnyAndDifferentFromPlaceholder()
{
    const QString placeholder = m_field.placeholder;
    addSection(localized("Proposed For Other Items", "combo box section header title"),
               exifToolsProposedValueKey,
               [&](const QString &value) { return placeholder.isEmpty() || value != placeholder; });
}

void IPTCLocationComponent::addAllCurrentValuesIfAnyAndDifferentFromOwnValue()
{
    const QString own = _currentValueInInterface->value();
    addSection(localized("From Other Items", "combo box section header title"), exifToolsValueKey,
               [&](const QString &value) { return value != own; });
}

void IPTCLocationComponent::typeText(const QString &text)
{
    m_field.text = text;
    _currentValueInInterface->setValue(text);
    stateChanged();
}

void IPTCLocationComponent::chooseMenuItem(const QString &title)
{
    for (const MenuEntry &entry : std::as_const(m_menu)) {
        if (entry.kind == MenuEntry::Kind::Item && entry.title == title) {
            _currentValueInInterface->setValue(title);
            stateChanged();
            return;
        }
    }
}

void IPTCLocationComponent::handleReturn()
{
    if (m_applyEnabled)
        executeApplyButton();
}

void IPTCLocationComponent::executeApplyButton()
{
    // Through the write engine: merged per file, in the background, one alert for the failures.
    // Each file's write announces the selection again once the file has been read anew.
    ChangeManager::applyLocationFieldToCurrentSelection(exifToolsValueKey,
                                                        _currentValueInInterface->value());
}

void IPTCLocationComponent::executeResetButton()
{
    _currentValueInInterface->setValue(_currentValueOnDisk->value());
}

void IPTCLocationComponent::configureApplyButton()
{
    m_applyEnabled = !m_model.selectedNodes().isEmpty()
        && _currentValueOnDisk->value() != _currentValueInInterface->value();
    stateChanged();
}

void IPTCLocationComponent::changeTextColor()
{
    m_textColor = _currentValueInInterface->value() != _currentValueOnDisk->value()
        ? ColorRole::UncommittedTextColor
        : ColorRole::LabelColor;
    stateChanged();
}

void IPTCLocationComponent::stateChanged()
{
    stateRevision->setValue(stateRevision->value() + 1);
}
