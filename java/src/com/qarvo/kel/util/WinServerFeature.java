package com.qarvo.kel.util;

/** One installed feature of a Windows server, as {@link WindowsUtil#getWindowsInstalledFeatures} found it. */
public final class WinServerFeature {
    private final int id;
    private final int parentId;
    private final String name;

    /**
     * Describes a feature.
     *
     * @param id its number
     * @param parentId the number of the feature that it is a part of, 0 for none
     * @param name its name
     */
    public WinServerFeature(int id, int parentId, String name) {
        this.id = id;
        this.parentId = parentId;
        this.name = name;
    }

    /**
     * Gives the feature's number.
     *
     * @return the number
     */
    public int getId() {
        return id;
    }

    /**
     * Gives the number of the feature that this one is a part of.
     *
     * @return the number, 0 for none
     */
    public int getParentId() {
        return parentId;
    }

    /**
     * Gives the feature's name.
     *
     * @return the name
     */
    public String getName() {
        return name;
    }

    @Override
    public String toString() {
        return name + " (" + id + " in " + parentId + ')';
    }
}
