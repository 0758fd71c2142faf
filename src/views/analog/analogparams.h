#pragma once

#include "views/common/cardview.h"

#include <functional>

// Parameters the analog families share beyond the standard four, and small changes to a
// parameter, so that a family's table reads as its map does.
namespace AnalogParams {

using ChannelNumber = std::function<int(int ch)>;

// The same parameter at other cells of the record.
inline ParamSpec atCell(ParamSpec param, ChannelNumber cell) {
    param.cell = std::move(cell);
    return param;
}

// The same parameter at other items on the wire.
inline ParamSpec atItem(ParamSpec param, ChannelNumber item) {
    param.item = std::move(item);
    return param;
}

// The same parameter without selecting its text on focus.
inline ParamSpec noSelectOnFocus(ParamSpec param) {
    param.selectOnFocus = false;
    return param;
}

// A field of its own caption, in `group`, at `item` and `cell` (a Param cell).
inline ParamSpec channelParam(const QString &control, const QString &groupCaption,
                              const QString &caption, const QString &group, ChannelNumber item,
                              ChannelNumber cell, FieldKind kind = FieldKind::Real) {
    ParamSpec param;
    param.control = control;
    param.groupCaption = groupCaption;
    param.caption = caption;
    param.group = group;
    param.item = std::move(item);
    param.cell = std::move(cell);
    param.kind = kind;
    return param;
}

// The input values that zero and full scale stand for, in group 02.
inline ParamSpec zeroBase(ChannelNumber item, ChannelNumber cell) {
    return channelParam("txtZBase", "Base", "Zero", "02", std::move(item), std::move(cell));
}
inline ParamSpec fullBase(ChannelNumber item, ChannelNumber cell) {
    return channelParam("txtFBase", "Base", "Full", "02", std::move(item), std::move(cell));
}

// A view that checks no range and filters no key: a field that is not empty goes to the card as
// typed, an empty one (a flag too, as plain text) is refilled from its cell.
inline ViewSpec asTypedSpec(const QString &form, const QString &tag, int channels) {
    ViewSpec plan;
    plan.formName = form;
    plan.tag = tag;
    plan.channels = channels;
    plan.acceptance = Acceptance::NotEmpty;
    plan.keyFilters = false;
    plan.flagRefillPlain = true;
    return plan;
}

} // namespace AnalogParams
