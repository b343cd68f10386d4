#include "LocationFieldFragment.h"

#include "ContainerBound.h"
#include "EditorStyle.h"
#include "bricks/controls/ControlDirectives.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>

namespace B = BuildDirectivesNamespace;
using namespace LayoutRecipeNamespace;
using D = SmartLayoutDirectionsType;
using MenuEntry = IPTCLocationComponent::MenuEntry;

namespace {

// The button at the field's end. Its menu is made anew whenever the component's changes, so the
// directive gives it none.
class ProposalsButton
    : public LeafCreatingBuildDirective
    , public DirectiveModifiers<ProposalsButton>
{
public:
    QString description() const override { return QStringLiteral("ProposalsButton"); }
    BuiltView buildLeaf() const override
    {
        return {new FakeComboBoxButtonBrick({}), std::make_shared<NullBinding>()};
    }
};

} // namespace

QString LocationFieldFragment::nameOf(const QString &exifToolsValueKey)
{
    if (exifToolsValueKey == u"Sub-location")
        return QStringLiteral("sublocation");
    if (exifToolsValueKey == u"Province-State")
        return QStringLiteral("province");
    return exifToolsValueKey.toLower();
}

B::FragmentWall LocationFieldFragment::directive(IPTCLocationComponent &component,
                                                 const QString &name)
{
    using namespace EditorStyle;
    const LayoutTag caption(name + QStringLiteral("Label")), field(name + QStringLiteral("Field")),
        combo(name + QStringLiteral("ComboButton")), apply(name + QStringLiteral("ApplyButton")),
        reset(name + QStringLiteral("ResetButton"));
    IPTCLocationComponent *c = &component;
    const QString fieldName = component.label.chopped(component.label.endsWith(u':') ? 1 : 0);

    return B::FragmentWall {
        B::StaticLabel(component.label).tag(caption).style<QLabel>(&makeCaption),
        B::UnboundTextField().tag(field).style<SmartTextField>([fieldName](SmartTextField *f) {
            f->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
            f->setAccessibleName(fieldName);
        }),
        ProposalsButton().tag(combo).style<QAbstractButton>([fieldName](QAbstractButton *b) {
            b->setFocusPolicy(Qt::TabFocus);
            b->setToolTip(tr("Proposals and the values of other items (Up or Down in the field)"));
            b->setAccessibleName(tr("%1 proposals").arg(fieldName));
            b->setFixedWidth(iconButtonSide(b) + 8);
        }),
        B::PushButton(tr("Apply", "button label"), [c] { c->executeApplyButton(); })
            .tag(apply)
            .style<QAbstractButton>([fieldName](QAbstractButton *b) {
                makeTextButton(b, tr("Write the %1 to the selected files").arg(fieldName),
                               tr("Apply %1").arg(fieldName));
            }),
        B::PushButton(QString(), [c] { c->executeResetButton(); })
            .tag(reset)
            .style<QAbstractButton>([fieldName](QAbstractButton *b) {
                makeIconButton(b, u"arrow.triangle.2.circlepath",
                               tr("Show the %1 stored in the files again").arg(fieldName),
                               tr("refresh"));
            })}
        .layout({pin(caption, D::left, horizontalMargin), after(field, caption, columnSpacing),
                 after(combo, field, buttonSpacing), after(apply, combo, columnSpacing),
                 after(reset, apply, buttonSpacing), pin(reset, D::right, horizontalMargin),
                 rowWithin({field, caption, combo, apply, reset}, verticalMargin)})
        .code(CodeExecutionPhase::prepare, [c, name](QWidget *view, Binding *, Assembly *) {
            view->setObjectName(name + QStringLiteral("Fragment"));
            new LocationFieldFragment(*c, name, view);
        });
}

LocationFieldFragment::LocationFieldFragment(IPTCLocationComponent &component, const QString &name,
                                             QWidget *fragment)
    : QObject(fragment)
    , m_component(component)
    , m_fragment(fragment)
{
    m_field = fragment->findChild<SmartTextField *>(name + QStringLiteral("Field"));
    m_comboButton
        = fragment->findChild<FakeComboBoxButtonBrick *>(name + QStringLiteral("ComboButton"));
    m_applyButton = fragment->findChild<QWidget *>(name + QStringLiteral("ApplyButton"));
    if (!m_field || !m_comboButton || !m_applyButton)
        qFatal("LocationFieldFragment: the fragment lacks its field or buttons");

    IPTCLocationComponent *c = &component;
    m_field->textChangedAction = [c](const QString &text) {
        c->typeText(text);
    };
    m_field->returnKeyActionFunction = [c](const QString &) {
        c->handleReturn();
    };
    m_field->callsReturnKeyFunctionOnResigningFirstResponder = true;
    m_field->installEventFilter(this);
    fragment->installEventFilter(this);

    const QPointer<LocationFieldFragment> self = this;
    component.stateRevision->addHotListener([self](int) {
        if (self)
            self->sync();
    });
}

bool LocationFieldFragment::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_field && event->type() == QEvent::KeyPress) {
        switch (static_cast<QKeyEvent *>(event)->key()) {
        case Qt::Key_Escape:
            m_component.executeResetButton();
            return true;
        case Qt::Key_Up:
        case Qt::Key_Down:
            openMenu();
            return true;
        default:
            break;
        }
    }
    if (watched == m_fragment
        && (event->type() == QEvent::PaletteChange
            || event->type() == QEvent::ApplicationPaletteChange))
        sync();
    return false;
}

void LocationFieldFragment::openMenu()
{
    if (m_comboButton && m_comboButton->isEnabled())
        m_comboButton->showMenu();
}

void LocationFieldFragment::rebuildMenu()
{
    const QList<MenuEntry> &entries = m_component.menu();
    if (m_menuBuilt && entries == m_shownMenu)
        return;
    m_shownMenu = entries;
    m_menuBuilt = true;
    QMenu *menu = m_comboButton->itemMenu();
    menu->clear();
    IPTCLocationComponent *c = &m_component;
    for (const MenuEntry &entry : entries) {
        if (entry.kind == MenuEntry::Kind::SectionHeader) {
            menu->addSection(entry.title);
            continue;
        }
        const QString title = entry.title;
        connect(menu->addAction(title), &QAction::triggered, this,
                [c, title] { c->chooseMenuItem(title); });
    }
    if (entries.isEmpty())
        menu->addAction(tr("No proposals"))->setEnabled(false);
}

void LocationFieldFragment::sync()
{
    if (!m_fragment || !m_field)
        return;
    const IPTCLocationComponent &c = m_component;
    const auto &state = c.field();
    if (m_field->text() != state.text)
        m_field->setText(state.text);
    if (m_field->placeholderText() != state.placeholder)
        m_field->setPlaceholderText(state.placeholder);
    m_field->setEnabled(state.editable);

    const QPalette palette = QApplication::palette(m_fragment);
    EditorStyle::setTextColor(m_field, EditorStyle::color(c.textColor(), palette));
    const QColor border = EditorStyle::color(c.borderColor(), palette);
    if (m_field->layerBorderColor != border) {
        m_field->layerBorderColor = border;
        m_field->layerBorderWidth = 1;
        m_field->layerCornerRadius = 5;
        m_field->update();
    }
    if (m_comboButton) {
        m_comboButton->setEnabled(c.comboButtonEnabled());
        rebuildMenu();
    }
    if (m_applyButton)
        m_applyButton->setEnabled(c.applyButtonEnabled());
}
