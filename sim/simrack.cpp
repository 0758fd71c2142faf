#include "simrack.h"

#include <QDateTime>

namespace {
const QString kGroupZero = QStringLiteral("00");
const QString kScanGroup = QStringLiteral("99");

QString twoDigits(int n) { return QStringLiteral("%1").arg(n, 2, 10, QLatin1Char('0')); }

// Group and item texts name the same number with or without a leading zero ("9" and "09").
QString normalised(const QString &number) {
    bool ok = false;
    const int n = number.toInt(&ok);
    return ok && n >= 0 ? twoDigits(n) : number;
}
} // namespace

SimRack::SimRack() : m_startMs(QDateTime::currentMSecsSinceEpoch()) {
    comm().model = QStringLiteral("VX-ZT1");
    comm().version = QStringLiteral("1.00");
    comm().setItem("01", "01", "D1");
    refreshDirectory();
}

qint64 SimRack::now() const {
    return m_fixedTime ? *m_fixedTime : QDateTime::currentMSecsSinceEpoch() - m_startMs;
}

void SimRack::refreshDirectory() {
    for (int n = 0; n <= 16; ++n) {
        SimCard &card = slot(n);
        if (!card.present()) continue;
        card.setItem(kGroupZero, "01", "D0");
        card.setItem(kGroupZero, "04", "D" + card.model);
        card.setItem(kGroupZero, "40", "DVER:" + card.version);
        if (n > 0) card.setItem(kGroupZero, "39", "DSW:" + (card.dip.isEmpty() ? "00,00,00" : card.dip));
    }
    for (int n = 1; n <= 16; ++n) {
        const SimCard &card = slot(n);
        const QString model = !card.present()           ? QStringLiteral("UNKNOWN")
                              : card.listName.isEmpty() ? card.model
                                                        : card.listName;
        comm().setItem(kGroupZero, twoDigits(9 + n), QStringLiteral("D%1:%2").arg(n).arg(model));
    }
}

void SimRack::vanish(int n) {
    slot(n) = SimCard();
    refreshDirectory();
}

QStringList SimRack::commands() const {
    QStringList lines;
    for (const SimTranscriptEntry &entry : m_transcript)
        if (entry.fromProgram) lines << entry.text;
    return lines;
}

QList<SimReply> SimRack::feed(const QByteArray &bytes) {
    QList<SimReply> replies;
    m_pending += bytes;
    // A line without CR never ends; do not let it grow without bound.
    if (m_pending.size() > 4096 && !m_pending.contains('\r')) m_pending = m_pending.right(4096);
    qsizetype cr;
    while ((cr = m_pending.indexOf('\r')) >= 0) {
        const QString command = QString::fromLatin1(m_pending.left(cr));
        m_pending.remove(0, cr + 1);
        m_transcript.append({true, command});
        const std::optional<SimFaultRule> fault = takeFault(command);
        QString reply;
        if (!fault || fault->kind != SimFault::NoReply) reply = answer(command);
        const SimReply shaped = shape(reply, fault);
        if (!shaped.bytes.isEmpty() || shaped.cutLine) {
            QString logged = QString::fromLatin1(shaped.bytes);
            if (logged.endsWith('\r')) logged.chop(1);
            m_transcript.append({false, logged});
            replies.append(shaped);
        }
    }
    return replies;
}

std::optional<SimFaultRule> SimRack::takeFault(const QString &command) {
    for (qsizetype i = 0; i < m_faults.size(); ++i) {
        SimFaultRule &rule = m_faults[i];
        if (!command.startsWith(rule.match)) continue;
        const SimFaultRule taken = rule;
        if (rule.count > 0 && --rule.count == 0) m_faults.removeAt(i);
        return taken;
    }
    return std::nullopt;
}

SimReply SimRack::shape(const QString &reply, const std::optional<SimFaultRule> &fault) {
    SimReply out;
    QString text = reply;
    bool withCR = !text.isEmpty();
    if (fault) {
        switch (fault->kind) {
        case SimFault::NoReply: withCR = false; text.clear(); break;
        case SimFault::Split: out.pieces = std::max(2, fault->param); break;
        case SimFault::NoCR: withCR = false; break;
        case SimFault::Delay: out.delayMs = fault->param; break;
        case SimFault::Late: out.delayMs = 3000 + fault->param; break;
        case SimFault::Garbage:
            out.bytes = QByteArray("\x01\xfe#?\x7f", 5);
            text.clear();
            break;
        case SimFault::Timeout: text = QStringLiteral("DTMOUT"); break;
        case SimFault::Refuse: text = QStringLiteral("CNG"); break;
        case SimFault::Unused: text = QStringLiteral("CNU"); break;
        case SimFault::CutLine: out.cutLine = true; text.clear(); withCR = false; break;
        }
    }
    out.bytes += text.toLatin1();
    if (withCR || (fault && fault->kind == SimFault::Garbage)) out.bytes += '\r';
    return out;
}

QString SimRack::answer(const QString &command) {
    if (command.isEmpty()) return QString();
    const QChar letter = command.at(0);
    const QString rest = command.mid(1);
    if (letter == QLatin1Char('G')) return answerGroup(rest);
    if (letter == QLatin1Char('I')) return answerItem(rest);
    if (letter == QLatin1Char('D')) return answerData(rest);
    return QStringLiteral("CNG");
}

QString SimRack::answerGroup(const QString &group) {
    const QString g = normalised(group);
    m_item.clear();
    if (g == kGroupZero || g == kScanGroup || (selected().present() && selected().groups.contains(g))) {
        m_group = g;
        return QStringLiteral("COK");
    }
    m_group.clear();
    return QStringLiteral("CNG");
}

QString SimRack::answerItem(const QString &item) {
    if (m_group.isEmpty() || m_group == kScanGroup) return QStringLiteral("CNG");
    const QString i = normalised(item);
    if (m_group == kGroupZero && i == QLatin1String("41")) {
        m_item = i;
        return QStringLiteral("D%1").arg(m_slot);
    }
    SimCard &card = selected();
    if (card.live) {
        if (const auto value = card.live(m_group, i, now())) {
            m_item = i;
            return *value;
        }
    }
    const auto group = card.groups.constFind(m_group);
    if (!card.present() || group == card.groups.cend() || !group->contains(i)) {
        m_item.clear();
        return QStringLiteral("CNU");
    }
    m_item = i;
    return group->value(i);
}

QString SimRack::answerData(const QString &data) {
    if (m_group.isEmpty() || m_item.isEmpty()) return QStringLiteral("CNG");
    if (m_group == kGroupZero && m_item == QLatin1String("41")) {
        bool ok = false;
        const int n = data.toInt(&ok);
        if (!ok || n < 0 || n > 16) return QStringLiteral("CNG");
        m_slot = n;
        return "D" + data;
    }
    SimCard &card = selected();
    if (card.onData)
        if (const auto reply = card.onData(card, m_group, m_item, data, now())) return *reply;
    card.groups[m_group][m_item] = "D" + data;
    if (card.onWrite) card.onWrite(card, m_group, m_item, data);
    return "D" + data;
}
