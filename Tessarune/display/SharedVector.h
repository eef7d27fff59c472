#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

namespace tessarune {

/// A list that is copied in constant time: copies share their elements. A change of one copy
/// duplicates a few nodes of up to 32 pointers and leaves the other copies unchanged.
///
/// The elements are in the leaves of a tree; the last leaf is kept outside of the tree. So an
/// append costs as little in a long list as in a short one. `set` visits one node on each level of
/// the tree (three levels for up to 32,768 elements). An unshared node changes in place. Elements
/// never change, so a reference to an element stays valid while any copy has the element.
///
/// Reads like a `std::vector`. All copies that share elements must stay on one thread.
template <typename T>
class SharedVector {
  public:
    using Element = std::shared_ptr<const T>;

    class Iterator {
      public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = T;
        using difference_type = std::ptrdiff_t;
        using pointer = const T*;
        using reference = const T&;

        Iterator() = default;
        Iterator(const SharedVector* list, std::size_t index) : list_(list), index_(index) {}
        const T& operator*() const { return (*list_)[index_]; }
        const T* operator->() const { return &**this; }
        Iterator& operator++() {
            ++index_;
            return *this;
        }
        Iterator operator++(int) { return {list_, index_++}; }
        bool operator==(const Iterator&) const = default;

      private:
        const SharedVector* list_ = nullptr;
        std::size_t index_ = 0;
    };
    using value_type = T;
    using const_iterator = Iterator;

    SharedVector() = default;
    explicit SharedVector(std::vector<T> values) {
        for (T& value : values)
            push_back(std::move(value));
    }

    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    const T& operator[](std::size_t index) const { return *element(index); }
    const T& front() const { return (*this)[0]; }
    const T& back() const { return (*this)[size_ - 1]; }
    Iterator begin() const { return {this, 0}; }
    Iterator end() const { return {this, size_}; }

    /// The shared element, for insertion into another list without a copy.
    const Element& element(std::size_t index) const {
        return leafOf(index)->elements[slot(index, 0)];
    }

    void push_back(T value) { append(std::make_shared<const T>(std::move(value))); }
    void append(Element element) {
        if (last_ && slot(size_, 0) == 0)
            addToTree(std::move(last_));
        own(last_).elements.push_back(std::move(element));
        ++size_;
    }
    void set(std::size_t index, T value) {
        Node* node = index < treeSize() ? &own(root_) : &own(last_);
        for (unsigned level = index < treeSize() ? levels_ : 0; level > 0; --level)
            node = &own(node->children[slot(index, level)]);
        node->elements[slot(index, 0)] = std::make_shared<const T>(std::move(value));
    }
    /// Keeps the first `size` elements, or all if there are fewer.
    void truncate(std::size_t size) {
        if (size == 0) {
            *this = SharedVector();
        } else if (size < size_) {
            const std::size_t before = treeSize();
            last_ = leafOf(size - 1);
            size_ = size;
            own(last_).elements.resize(slot(size - 1, 0) + 1);
            if (treeSize() != before)
                truncateTree();
        }
    }
    /// Replaces the elements from `first` to before `last`. The elements after them are inserted
    /// again, at a cost in proportion to their number.
    void replace(std::size_t first, std::size_t last, const SharedVector& with) {
        std::vector<Element> remainder;
        for (std::size_t i = last; i < size_; ++i)
            remainder.push_back(element(i));
        truncate(first);
        for (std::size_t i = 0; i < with.size(); ++i)
            append(with.element(i));
        for (Element& kept : remainder)
            append(std::move(kept));
    }

    /// Calls `visit` with each index at which both lists have an element, but do not share it. The
    /// cost depends on the changes, not on the lengths.
    template <typename Visit>
    void forEachUnshared(const SharedVector& other, Visit visit) const {
        if (empty() || other.empty())
            return;
        const std::size_t common = std::min(treeSize(), other.treeSize());
        if (common > 0)
            compare(*root_, levels_, *other.root_, other.levels_, 0, visit);
        compare(*leafOf(common), 0, *other.leafOf(common), 0, common, visit);
    }

    bool operator==(const SharedVector& other) const {
        if (size_ != other.size_)
            return false;
        for (std::size_t i = 0; i < size_; ++i) {
            if (element(i) != other.element(i) && !((*this)[i] == other[i]))
                return false;
        }
        return true;
    }

  private:
    static constexpr unsigned bits = 5;

    /// Has children, or elements if it is a leaf.
    struct Node {
        std::vector<std::shared_ptr<Node>> children;
        std::vector<Element> elements;
    };

    /// Compares two nodes whose lowest index is `first`. If one node is higher in its tree, only
    /// its first child, which covers the indexes of the other node, is compared.
    template <typename Visit>
    static void compare(const Node& one, unsigned level, const Node& other, unsigned otherLevel,
                        std::size_t first, Visit& visit) {
        if (level > otherLevel)
            return compare(*one.children[0], level - 1, other, otherLevel, first, visit);
        if (otherLevel > level)
            return compare(one, level, *other.children[0], otherLevel - 1, first, visit);
        if (&one == &other)
            return;
        for (std::size_t i = 0; i < std::min(one.children.size(), other.children.size()); ++i)
            compare(*one.children[i], level - 1, *other.children[i], level - 1,
                    first + (i << (bits * level)), visit);
        for (std::size_t i = 0; i < std::min(one.elements.size(), other.elements.size()); ++i) {
            if (one.elements[i] != other.elements[i])
                visit(first + i);
        }
    }

    static std::size_t slot(std::size_t index, unsigned level) {
        return (index >> (bits * level)) & ((std::size_t{1} << bits) - 1);
    }
    /// The node to write to. If another list shares the node, replaces it by a copy first.
    static Node& own(std::shared_ptr<Node>& node) {
        if (!node)
            node = std::make_shared<Node>();
        else if (node.use_count() > 1)
            node = std::make_shared<Node>(*node);
        return *node;
    }
    /// The number of elements in the tree: all but those of the last leaf.
    std::size_t treeSize() const { return size_ == 0 ? 0 : size_ - 1 - slot(size_ - 1, 0); }
    const std::shared_ptr<Node>& leafOf(std::size_t index) const {
        if (index >= treeSize())
            return last_;
        const std::shared_ptr<Node>* node = &root_;
        for (unsigned level = levels_; level > 0; --level)
            node = &(*node)->children[slot(index, level)];
        return *node;
    }
    /// Moves the last leaf, which is full, into the tree. Called before the first element of the
    /// next leaf is counted in `size_`.
    void addToTree(std::shared_ptr<Node> leaf) {
        const std::size_t index = size_ - 1;
        if (!root_) {
            root_ = std::move(leaf);
            return;
        }
        if (index >> (bits * (levels_ + 1)) != 0) {
            auto root = std::make_shared<Node>();
            root->children.push_back(std::move(root_));
            root_ = std::move(root);
            ++levels_;
        }
        Node* node = &own(root_);
        for (unsigned level = levels_; level > 1; --level) {
            const std::size_t child = slot(index, level);
            if (child == node->children.size())
                node->children.emplace_back();
            node = &own(node->children[child]);
        }
        node->children.push_back(std::move(leaf));
    }
    /// Removes from the tree what is beyond `treeSize()`.
    void truncateTree() {
        if (treeSize() == 0) {
            root_ = nullptr;
            levels_ = 0;
            return;
        }
        std::shared_ptr<Node>* node = &root_;
        for (unsigned level = levels_; level > 0; --level) {
            auto& children = own(*node).children;
            children.resize(slot(treeSize() - 1, level) + 1);
            node = &children.back();
        }
    }

    std::size_t size_ = 0;
    unsigned levels_ = 0;        // above the leaves
    std::shared_ptr<Node> root_; // null: there is one leaf or none
    std::shared_ptr<Node> last_; // null: the list is empty
};

} // namespace tessarune
