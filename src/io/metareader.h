// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#pragma once

#include "model/tweeninfo.h"
#include "meta/tagmanager.h"
#include "meta/valinfocollection.h"
#include "meta/valuelineholder.h"
#include "model/rigxdata.h"

#include <QList>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace Morvane {

/// Reads the tag list, variable declarations and value lines written by
/// `MetaWriter`, from either form (`Node` as for `ProjectReader`). The XML
/// form nests items under one element ("tag_list" > "i"), the JSON form makes
/// the element name the array of items; both are accepted everywhere, as are
/// "varline" and "valline".
///
/// Tag positions are mapped to the uids of the tags read, declaration ids to
/// the owner's declarations; anything that names nothing is dropped with a
/// warning.
template <typename Node> class MetaReader
{
public:
    using Warn = std::function<void(const QString &)>;

    MetaReader(RigxData *document, Warn warn)
        : mDocument(document)
        , mWarn(std::move(warn))
    {
    }

    /// Reads every "tag_list" child of `root` into the document's tag list.
    void readTagList(const Node &root)
    {
        root.forEach("tag_list", [this](const Node &list) {
            QString name;
            if (list.string("name", &name))
                readTag(name, true);
            list.forEach("i", [this](const Node &item) {
                QString itemName;
                readTag(itemName, item.string("name", &itemName));
            });
        });
    }

    /// Reads every "var_defs" child of `owner` into `definitions`.
    void readVarDefs(const Node &owner, ValInfoCollection *definitions, const QString &ownerName)
    {
        owner.forEach("var_defs", [&](const Node &list) {
            if (list.isValid() && hasDefinition(list))
                readDefinition(list, definitions, ownerName);
            list.forEach("i",
                         [&](const Node &item) { readDefinition(item, definitions, ownerName); });
        });
    }

    /// Reads a "meta" node into `holder`, resolving lines against `definitions`.
    void readMeta(const Node &meta, ValueLineHolder *holder, const ValInfoCollection &definitions,
                  const QString &ownerName)
    {
        if (!meta.isValid() || !holder)
            return;
        // Keys are collected and sorted once: a file may hold very long lines.
        std::vector<std::unique_ptr<ValKey>> tagKeys;
        meta.forEach("tagline", [&](const Node &tagline) {
            tagline.forEach("key", [&](const Node &key) { readTagKey(key, &tagKeys, ownerName); });
        });
        if (!tagKeys.empty())
            holder->tagLine().setKeys(std::move(tagKeys));
        const auto readLine = [&](const Node &line) {
            readValueLine(line, holder, definitions, ownerName);
        };
        meta.forEach("varline", readLine);
        meta.forEach("valline", readLine);
    }

private:
    static bool hasDefinition(const Node &node)
    {
        QString text;
        return node.string("name", &text) || node.string("type", &text);
    }

    static int intOr(const Node &node, const char *name, int fallback)
    {
        int value;
        return node.integer(name, &value) ? value : fallback;
    }

    void readTag(const QString &name, bool present)
    {
        // Positions in the file must stay aligned, so a dropped tag keeps its slot.
        if (!present || name.isEmpty()) {
            mWarn(QStringLiteral("A tag without a name is dropped"));
            mTagUids.append(Tag::InvalidId);
            return;
        }
        TagManager &tags = mDocument->tagManager();
        const Tag existing = tags.tagFromName(name);
        if (existing.isValid()) {
            mTagUids.append(existing.uid());
            return;
        }
        Tag tag(name);
        while (tags.indexOfTag(tag.uid()) >= 0)
            tag = Tag(name);
        tags.appendTag(tag);
        mTagUids.append(tag.uid());
    }

    void readDefinition(const Node &node, ValInfoCollection *definitions, const QString &ownerName)
    {
        ValInfo info;
        QString typeName;
        node.string("name", &info.name);
        node.string("type", &typeName);
        info.type = varTypeFromString(typeName);
        if (info.type == VarType::Invalid || info.name.isEmpty()) {
            mWarn(QStringLiteral("Variable \"%1\" of \"%2\" has no name or an unknown type "
                                 "\"%3\"; it is dropped")
                      .arg(info.name, ownerName, typeName));
            return;
        }
        info.id = intOr(node, "id", definitions->nextId());
        info.defaultValue = readValue(node, "default", info.type);
        if (!definitions->appendInfo(info))
            mWarn(QStringLiteral("Variable \"%1\" of \"%2\" repeats a name or id; it is dropped")
                      .arg(info.name, ownerName));
    }

    static QVariant readValue(const Node &node, const char *name, VarType type)
    {
        switch (type) {
        case VarType::Int: {
            int value = 0;
            if (node.integer(name, &value))
                return QVariant(value);
            double real = 0.0;
            node.real(name, &real);
            return varValueForType(type, real);
        }
        case VarType::Float: {
            double value = 0.0;
            node.real(name, &value);
            return QVariant(value);
        }
        case VarType::String: {
            QString value;
            node.string(name, &value);
            return QVariant(value);
        }
        default:
            return varZeroValue(type);
        }
    }

    void readTagKey(const Node &node, std::vector<std::unique_ptr<ValKey>> *keys,
                    const QString &ownerName)
    {
        TagState state;
        QList<int> uids;
        node.forEach("tag", [&](const Node &tag) {
            const int position = intOr(tag, "t", -1);
            const int uid = position >= 0 && position < mTagUids.size() ? mTagUids.at(position)
                                                                        : Tag::InvalidId;
            if (uid == Tag::InvalidId) {
                mWarn(QStringLiteral("A tag key of \"%1\" names tag %2, which does not exist; "
                                     "the tag is dropped")
                          .arg(ownerName)
                          .arg(position));
                return;
            }
            uids.append(uid);
        });
        state.setIds(uids);
        keys->push_back(std::make_unique<TagKey>(intOr(node, "time", 0), state));
    }

    void readValueLine(const Node &node, ValueLineHolder *holder,
                       const ValInfoCollection &definitions, const QString &ownerName)
    {
        const int def = intOr(node, "def", -1);
        const ValInfo *info = definitions.infoFromId(def);
        if (!info || info->type == VarType::Tag || info->type == VarType::Cluster) {
            mWarn(QStringLiteral("A value line of \"%1\" names variable %2, which is not "
                                 "declared; the line is dropped")
                      .arg(ownerName)
                      .arg(def));
            return;
        }
        std::vector<std::unique_ptr<ValKey>> keys;
        node.forEach("key", [&](const Node &keyNode) {
            std::unique_ptr<ValKey> key = ValKey::create(info->type, intOr(keyNode, "time", 0),
                                                         readValue(keyNode, "val", info->type));
            if (key->isTweenable()) {
                TweenInfo curve;
                readCurve(keyNode, &curve);
                key->setCurve(curve);
            }
            keys.push_back(std::move(key));
        });
        holder->lineForEditing({info->type, info->id})->setKeys(std::move(keys));
    }

    static void readCurve(const Node &node, TweenInfo *curve)
    {
        QString type;
        if (node.string("curve_type", &type))
            curve->setCurveType(type);
        static const char *const names[] = {"c1", "c2", "c3", "c4"};
        for (int i = 0; i < curve->cCount() && i < TweenInfo::MaxParameters; ++i) {
            double value;
            if (node.real(names[i], &value))
                curve->setC(i, value);
        }
    }

    RigxData *mDocument;
    Warn mWarn;
    // Tag uid by position in the file's list; InvalidId for dropped ones.
    QList<int> mTagUids;
};

} // namespace Morvane
