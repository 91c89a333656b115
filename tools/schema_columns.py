#!/usr/bin/env python3
"""DuckDB's column types for a table of the dataset, read from its JSON
Schema (inspect/schema), for read_json(..., columns = {...}): the engine
takes the types the schema declares instead of guessing them from a sample.

    schema_columns.py SCHEMA_DIR TABLE_SCHEMA      prints the columns as SQL
    schema_columns.py SCHEMA_DIR --manifest DATASET/manifest.json
                                                   prints {table: columns SQL} as JSON

Integers are UBIGINT when the schema keeps them from going below 0 and
BIGINT otherwise; a value null may take is nullable as every DuckDB column
is; objects with named members are STRUCTs, objects of free keys and values
of several types JSON.
"""
import json
import os
import sys
import urllib.parse


class Schemas:
    def __init__(self, folder):
        self.by_id = {}
        for name in os.listdir(folder):
            if name.endswith(".schema.json"):
                with open(os.path.join(folder, name), encoding="utf-8") as f:
                    document = json.load(f)
                self.by_id[document["$id"]] = document

    def resolve(self, node, base):
        """Follows $ref to the node it names, and the document it is in."""
        while "$ref" in node:
            target = urllib.parse.urljoin(base, node["$ref"])
            address, _, pointer = target.partition("#")
            document = self.by_id[address]
            node, base = document, address
            for part in filter(None, pointer.split("/")):
                node = node[part]
        return node, base

    def type_of(self, node, base):
        node, base = self.resolve(node, base)
        for keyword in ("oneOf", "anyOf"):
            if keyword in node:
                kinds = {self.type_of(branch, base) for branch in node[keyword]
                         if self.resolve(branch, base)[0].get("type") != "null"}
                return kinds.pop() if len(kinds) == 1 else "JSON"
        if "allOf" in node:
            members = {}
            for branch in node["allOf"]:
                part, part_base = self.resolve(branch, base)
                for name, member in part.get("properties", {}).items():
                    members[name] = self.type_of(member, part_base)
            return struct(members)
        if "const" in node:
            return scalar(node["const"])
        if "enum" in node:
            kinds = {scalar(v) for v in node["enum"] if v is not None}
            return kinds.pop() if len(kinds) == 1 else "JSON"
        kind = node.get("type")
        if isinstance(kind, list):
            kinds = [k for k in kind if k != "null"]
            kind = kinds[0] if len(kinds) == 1 else None
        if kind == "integer":
            return "UBIGINT" if node.get("minimum", -1) >= 0 else "BIGINT"
        if kind == "number":
            return "DOUBLE"
        if kind == "string":
            return "VARCHAR"
        if kind == "boolean":
            return "BOOLEAN"
        if kind == "array" and "items" in node:
            return self.type_of(node["items"], base) + "[]"
        if kind == "object" and node.get("properties"):
            return struct({name: self.type_of(member, base)
                           for name, member in node["properties"].items()})
        return "JSON"

    def columns(self, schema_file):
        """{column: DuckDB type} of a table's rows, in the schema's order."""
        document = next(d for d in self.by_id.values()
                        if d["$id"].rsplit("/", 1)[-1] == schema_file)
        members = {}
        for branch in document.get("allOf", []):
            part, base = self.resolve(branch, document["$id"])
            for name, member in part.get("properties", {}).items():
                members[name] = self.type_of(member, base)
        for name, member in document.get("properties", {}).items():
            members[name] = self.type_of(member, document["$id"])
        for name in document.get("required", []):
            members.setdefault(name, "JSON")
        return members


def scalar(value):
    if isinstance(value, bool):
        return "BOOLEAN"
    if isinstance(value, int):
        return "UBIGINT" if value >= 0 else "BIGINT"
    if isinstance(value, float):
        return "DOUBLE"
    return "VARCHAR"


def quoted(name):
    return '"' + name.replace('"', '""') + '"'


def struct(members):
    return "STRUCT(" + ", ".join("%s %s" % (quoted(n), t) for n, t in members.items()) + ")"


def columns_sql(columns):
    """DuckDB's columns = {...} argument."""
    return "{" + ", ".join("'%s': '%s'" % (name.replace("'", "''"), kind.replace("'", "''"))
                           for name, kind in columns.items()) + "}"


def main():
    folder = sys.argv[1]
    schemas = Schemas(folder)
    if sys.argv[2] == "--manifest":
        with open(sys.argv[3], encoding="utf-8") as f:
            manifest = json.load(f)
        print(json.dumps({table: columns_sql(schemas.columns(facts["schema"]))
                          for table, facts in manifest["tables"].items()}, indent=1))
    else:
        print(columns_sql(schemas.columns(sys.argv[2])))


if __name__ == "__main__":
    main()
