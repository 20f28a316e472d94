#include "pages/frmIntro.h"

#include <QFont>
#include <QHBoxLayout>
#include <QLabel>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QVBoxLayout>
#include <cmath>

#include "engine/Session.h"

namespace halvane::pages {

Slot<frmIntroPage> frmIntro("frmIntro");

namespace {
constexpr const char* kModule = "frmIntro";
}

frmIntroPage::frmIntroPage(PageSlot& slot) : Page(slot, kModule) {
    auto* columns = new QHBoxLayout;
    auto* text = new QVBoxLayout;
    Body()->addLayout(columns);

    Picture1 = NewLabel("Picture1", {}, columns);
    Picture1->setPixmap(DrawSeafloorPicture(150, 260));
    Picture1->setAlignment(Qt::AlignTop);
    columns->addLayout(text, 1);

    Label4 =
        NewLabel("Label4", QStringLiteral("Welcome to the Halvane Classification Wizard. "), text);
    QFont heading = Label4->font();
    heading.setBold(true);
    heading.setPointSizeF(heading.pointSizeF() * 1.3);
    Label4->setFont(heading);
    Label1 = NewLabel(
        "Label1",
        QStringLiteral(
            "This wizard allows users to classify benthic zones and associated structures from "
            "bathymetric data sets in ESRI's Grid raster data format.  As you move through the "
            "halvane classification process, click on the More about... buttons to launch the "
            "interactive help window and obtain more information on the methods utilized by the "
            "Halvane."),
        text);
    Label2 = NewLabel("Label2", QStringLiteral("Click on the Next -> button to begin."), text);
    text->addStretch(1);
    cmdAboutHalvane = NewButton(
        "cmdAboutHalvane", QStringLiteral("More about the Halvane Classification Wizard..."), text);
    resize(660, 330);

    NewButtonRow();
    // Present on the page as designed, but never usable: nothing comes before.
    cmdBack->setEnabled(false);
    cmdBack->setVisible(false);

    OnClick(cmdAboutHalvane, "cmdAboutHalvane_Click", kTopLevel,
            [this] { ShowHelp("wizard.htm"); });
    OnClick(cmdNext, "cmdNext_Click", kTopLevel, [this] { cmdNext_Click(); });
    OnClick(cmdCancel, "cmdCancel_Click", kTopLevel, [] { ExitProj(); });
}

void frmIntroPage::cmdNext_Click() {
    // The one page that shows the next before it hides itself.
    g_frm_PreviousPage = &frmIntro;
    frmZoneSetup_inputdata.Show();
    Hide();
}

QPixmap DrawSeafloorPicture(int width, int height) {
    QPixmap picture(width, height);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);

    QLinearGradient water(0, 0, 0, height);
    water.setColorAt(0.0, QColor(0x9c, 0xd3, 0xe8));
    water.setColorAt(1.0, QColor(0x0b, 0x2a, 0x55));
    painter.fillRect(picture.rect(), water);

    // Depth bands of a sounding chart, lighter towards the surface.
    painter.setPen(QPen(QColor(255, 255, 255, 60), 1, Qt::DashLine));
    for (int y = height / 8; y < height; y += height / 8) painter.drawLine(0, y, width, y);

    // A profile across a ridge, a crest and a trough, with a small pinnacle:
    // the structures the classification tells apart.
    auto floorAt = [&](double x) {
        const double t = x / width;
        return height *
               (0.72 - 0.22 * std::exp(-std::pow((t - 0.3) / 0.12, 2)) -
                0.10 * std::exp(-std::pow((t - 0.78) / 0.05, 2)) + 0.08 * std::sin(t * 9.0));
    };
    QPainterPath floor(QPointF(0, height));
    for (int x = 0; x <= width; x += 2) floor.lineTo(x, floorAt(x));
    floor.lineTo(width, height);
    floor.closeSubpath();
    QLinearGradient sediment(0, height * 0.4, 0, height);
    sediment.setColorAt(0.0, QColor(0xd8, 0xb8, 0x7a));
    sediment.setColorAt(1.0, QColor(0x6b, 0x4a, 0x2b));
    painter.fillPath(floor, sediment);
    painter.setPen(QPen(QColor(0x4a, 0x32, 0x1c), 2));
    painter.drawPath(floor);

    // Sound pings from a survey vessel at the surface.
    painter.setPen(QPen(QColor(255, 255, 255, 150), 1));
    const QPointF ship(width * 0.55, height * 0.06);
    for (int r = 14; r < height / 2; r += 16) {
        painter.drawArc(QRectF(ship.x() - r, ship.y() - r, 2 * r, 2 * r), -60 * 16, -60 * 16);
    }
    painter.setBrush(QColor(0x33, 0x33, 0x33));
    painter.setPen(Qt::NoPen);
    painter.drawRect(QRectF(ship.x() - 12, ship.y() - 5, 24, 6));
    return picture;
}

}  // namespace halvane::pages
